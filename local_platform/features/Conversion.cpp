// SPDX-License-Identifier: MIT
#include "features/Conversion.h"

#include "base/Text.h"
#include "features/ChildProcess.h"
#include "features/SoapDrawing.h"
#include "store/Secrets.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <spdlog/spdlog.h>
#include <thread>

namespace local_platform {

namespace {

constexpr std::uint64_t converterMemory = 4ull << 30;
constexpr std::uint64_t largestResult = 1ull << 30;
constexpr std::size_t longestReason = 500;

/// A folder that goes with this object.
class Folder
{
public:
    explicit Folder(const std::filesystem::path& path)
        : path_(path)
    {
        std::filesystem::create_directory(path_);
    }
    ~Folder()
    {
        std::error_code ignored; // the next start empties the scratch directory
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

std::string contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string escaped(const std::string& text)
{
    std::string xml;
    for (const char c : text) {
        if (c == '<')
            xml += "&lt;";
        else if (c == '&')
            xml += "&amp;";
        else
            xml += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
    return xml;
}

std::string envelope(const std::string& body)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Body>"
        + body + "</soap:Body></soap:Envelope>";
}

Xml fault(const std::string& who, const std::string& reason)
{
    return {500,
        envelope("<soap:Fault><faultcode>soap:" + who + "</faultcode><faultstring>" + escaped(cleaned(reason))
            + "</faultstring></soap:Fault>")};
}

} // namespace

Conversion::Conversion(const Options& options, const std::filesystem::path& scratch)
    : options_(options)
    , converter_(std::filesystem::absolute(options.converter))
    , scratch_(std::filesystem::absolute(scratch))
    , places_(std::max(1u, std::thread::hardware_concurrency()))
{
}

void Conversion::addTo(Routes& routes)
{
    routes.add("POST", "/NrvConRnx.asmx", [this](Call& call) { return answer(call); });
}

Xml Conversion::answer(Call& call)
{
    const Folder folder(scratch_ / randomToken());
    try {
        return {200, convert(call, folder.path())};
    } catch (const Refusal& refusal) {
        return fault("Client", refusal.what());
    } catch (const std::exception& error) {
        spdlog::error("Conversion: {}", error.what());
        return fault("Server", "The conversion failed; the platform's log says why");
    }
}

std::string Conversion::convert(Call& call, const std::filesystem::path& folder)
{
    const std::filesystem::path request = folder / "drawing";
    SoapDrawing drawing(request, options_.maxDrawingSize);
    call.read([&](const char* data, std::size_t size) { drawing.append(data, size); });
    drawing.finish();

    const std::string& operation = drawing.operation();
    std::string action = call.header("SOAPAction");
    action.erase(std::remove(action.begin(), action.end(), '"'), action.end());
    if (action != "http://tempuri.org/" + operation)
        throw Refusal("The SOAPAction \"" + action + "\" does not fit the request");

    // The converter tells the direction by the suffixes.
    const bool toDwg = operation == "ConDgn2Dwg";
    const std::string input = toDwg ? "in.dgn" : "in.dwg";
    const std::string output = toDwg ? "out.dwg" : "out.dgn";
    std::filesystem::rename(request, folder / input);
    runConverter(input, output, folder);
    const std::string converted = contentOf(folder / output);
    if (converted.empty())
        throw std::runtime_error("The converter made no drawing");
    return envelope("<" + operation + "Response xmlns=\"http://tempuri.org/\"><" + operation + "Result>"
        + base64(converted) + "</" + operation + "Result></" + operation + "Response>");
}

void Conversion::runConverter(
    const std::string& input, const std::string& output, const std::filesystem::path& folder)
{
    const std::chrono::seconds patience(options_.conversionTimeLimit);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    const Places::Place place(places_, patience);
    if (!place.taken())
        throw Refusal("Too many drawings are being converted; try again later");

    if (!std::filesystem::exists(converter_))
        throw std::runtime_error("There is no converter at " + converter_.string());
    const std::filesystem::path reasons = folder / "reason";
    const ChildOutcome outcome = runChild({"node", converter_.string(), input, output}, folder, reasons,
        {deadline, converterMemory, largestResult});
    if (outcome == ChildOutcome::OutOfTime)
        throw Refusal("The drawing takes too long to convert");
    if (outcome == ChildOutcome::Killed)
        throw Refusal("The drawing needs too much memory or space to convert");
    if (outcome == ChildOutcome::Succeeded)
        return;
    const std::string reason = contentOf(reasons).substr(0, longestReason);
    if (reason.empty())
        throw std::runtime_error("The converter ended without a reason; is node installed?");
    throw Refusal(reason.substr(0, reason.find('\n')));
}

} // namespace local_platform
