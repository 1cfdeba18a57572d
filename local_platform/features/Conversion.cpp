// SPDX-License-Identifier: MIT
#include "features/Conversion.h"

#include "base/Text.h"
#include "features/ChildProcess.h"
#include "features/SoapDrawing.h"
#include "store/Secrets.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <spdlog/spdlog.h>
#include <sstream>
#include <thread>
#include <unistd.h>
#include <vector>

namespace local_platform {

namespace {

constexpr std::uint64_t converterMemory = 4ull << 30;
constexpr std::uint64_t converterSpace = 2ull << 30;
constexpr unsigned converterThreads = 64;
constexpr unsigned converterFiles = 256;
constexpr int processorsAtOnce = 2; ///< that it may keep busy all its time: it computes in one thread
constexpr int secondsUntilNextTry = 10;
constexpr long long secondsInAnHour = 3600;
constexpr std::uintmax_t largestResult = 512u << 20;
constexpr std::size_t longestReport = 1u << 20;
constexpr int deepestReport = 16;
constexpr std::uint64_t mostAround = 1u << 20; // an envelope around the drawing
constexpr std::size_t longestReason = 500;
constexpr std::size_t longestReportHeader = 6000;

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

/// Where this program is, by PATH; empty when it is nowhere.
std::filesystem::path program(const std::string& name)
{
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path ? path : "/usr/local/bin:/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const auto file = std::filesystem::path(folder) / name;
        std::error_code ignored;
        if (std::filesystem::is_regular_file(file, ignored) && ::access(file.c_str(), X_OK) == 0)
            return std::filesystem::canonical(file);
    }
    return {};
}

/// What node needs to start and to run this script. Debian's has part of itself in /usr/share/nodejs.
std::vector<std::filesystem::path> neededBy(
    const std::filesystem::path& node, const std::filesystem::path& script)
{
    return {node, std::filesystem::weakly_canonical(script).parent_path(), "/lib", "/lib64", "/usr/lib",
        "/usr/lib64", "/usr/share/nodejs", "/etc/ld.so.cache", "/etc/ssl/openssl.cnf", "/dev/urandom"};
}

/// The beginning of a file of the converter's, which may have been taken over: what is not there is empty.
std::string beginningOf(const std::filesystem::path& path, std::size_t most)
{
    std::ifstream file(path, std::ios::binary);
    std::string text(most, '\0');
    file.read(text.data(), static_cast<std::streamsize>(most));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

/// Appends the content in Base64, without having it twice in memory.
void appendBase64(std::string& text, const std::filesystem::path& path)
{
    const std::uintmax_t size = std::filesystem::exists(path) ? std::filesystem::file_size(path) : 0;
    if (size == 0)
        throw std::runtime_error("The converter made no drawing");
    if (size > largestResult)
        throw Refusal("The converted drawing is too large");
    text.reserve(text.size() + size / 3 * 4 + 1024);
    std::ifstream file(path, std::ios::binary);
    std::string piece(48 << 10, '\0'); // a multiple of 3, so that only the last is padded
    while (file.read(piece.data(), static_cast<std::streamsize>(piece.size())) || file.gcount() > 0)
        text += base64(piece.substr(0, static_cast<std::size_t>(file.gcount())));
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

/// The body may be long, and is not copied.
std::string envelope(std::string body, const std::string& header = {})
{
    body.insert(0,
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">"
            + header + "<soap:Body>");
    return std::move(body.append("</soap:Body></soap:Envelope>"));
}

/// What the converter tells of its work, as it came; null where it told nothing that is JSON.
Json reportIn(const std::filesystem::path& folder)
{
    const auto isShallow = [](int depth, Json::parse_event_t, const Json&) { return depth < deepestReport; };
    return Json::parse(beginningOf(folder / "report.json", longestReport), isShallow, false);
}

/// Clients look for the result by its name, which a layer may bear as well.
std::string withoutResultNames(const std::string& text)
{
    std::string other;
    std::size_t from = 0;
    for (std::size_t at = 0; (at = text.find("Result", from)) != std::string::npos; from = at + 1)
        other.append(text, from, at - from).append("&#82;");
    return other.append(text, from);
}

std::string soapHeader(const Json& report)
{
    if (!report.is_object())
        return {};
    return "<soap:Header><ConversionReport xmlns=\"urn:tav:conversion\">"
        + withoutResultNames(escaped(serialized(report))) + "</ConversionReport></soap:Header>";
}

/// The report in Base64, without what can be long.
std::map<std::string, std::string> replyHeaders(Json report)
{
    if (!report.is_object())
        return {};
    for (const char* list : {"layers", "references", "damaged"})
        report.erase(list);
    const std::string encoded = base64(serialized(report));
    if (encoded.size() > longestReportHeader)
        return {};
    return {{"X-Conversion-Report", encoded}};
}

/// The request's own wish goes before the operator's.
std::string codePageFor(const Call& call, const Options& options)
{
    const std::string wanted = call.header("X-Drawing-Code-Page");
    if (wanted.empty())
        return options.drawingCodePage;
    const auto isPlain = [](unsigned char c) { return std::isalnum(c) || c == '-' || c == '_'; };
    if (wanted.size() > 32 || !std::all_of(wanted.begin(), wanted.end(), isPlain) || wanted.front() == '-')
        throw Refusal("There is no code page of that name");
    return wanted;
}

/// SOAP has 500 for its faults. Clients look at the fault alone; others understand a status that passes.
Xml fault(const std::string& who, const std::string& reason, int status = 500)
{
    return {status,
        envelope("<soap:Fault><faultcode>soap:" + who + "</faultcode><faultstring>" + escaped(cleaned(reason))
            + "</faultstring></soap:Fault>")};
}

Xml fault(const Refusal& refusal, const Json& report)
{
    Xml reply = refusal.retryAfter() != 0 ? fault("Server", refusal.what(), refusal.status())
                                          : fault("Client", refusal.what());
    reply.headers = replyHeaders(report);
    if (refusal.retryAfter() != 0)
        reply.headers["Retry-After"] = std::to_string(refusal.retryAfter());
    return reply;
}

Refusal busy(const std::string& message)
{
    return Refusal(message, 503).retriedAfter(secondsUntilNextTry);
}

} // namespace

Conversion::Conversion(const Options& options, const std::filesystem::path& scratch, const Clock& clock)
    : options_(options)
    , clock_(clock)
    , converter_(std::filesystem::absolute(options.converter))
    , node_(program("node"))
    , cage_(neededBy(node_, converter_))
    , scratch_(std::filesystem::absolute(scratch))
    , turns_(options.conversionsAtOnce != 0 ? options.conversionsAtOnce
                                            : std::max(1u, std::thread::hardware_concurrency()),
          options.conversionQueue)
    , budgets_(options.conversionsPerHour, secondsInAnHour)
{
    if (node_.empty())
        spdlog::warn("Drawings cannot be converted: there is no node in PATH");
    for (const std::string& gap : cage_.gaps())
        spdlog::warn("The converter of drawings is not kept from {}", gap);
}

void Conversion::addTo(Routes& routes)
{
    // Base64 makes a drawing a third larger.
    const BodyUse spool{nullptr, scratch_, options_.maxDrawingSize / 3 * 4 + mostAround};
    routes.add(
        "POST", "/NrvConRnx.asmx", {[this](Call& call) { return answer(call); }, spool, Lane::Conversion});
}

Xml Conversion::answer(Call& call)
{
    // Nobody signs in for this, so an address is all that is known of who asks.
    if (budgets_.isSpent(call.client(), clock_.now()))
        return fault(Refusal("Too many drawings came from this address; try again later", 429)
                         .retriedAfter(secondsUntilNextTry),
            {});
    budgets_.spend(call.client(), clock_.now());
    const Folder folder(scratch_ / randomToken());
    try {
        return convert(call, folder.path());
    } catch (const Refusal& refusal) {
        const Json report = reportIn(folder.path());
        spdlog::info("Conversion refused: {}", refusal.what());
        return fault(refusal, report);
    } catch (const std::exception& error) {
        spdlog::error("Conversion: {}", error.what());
        return fault("Server", "The conversion failed; the platform's log says why");
    }
}

Xml Conversion::convert(Call& call, const std::filesystem::path& folder)
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
    runConverter(call, input, output, folder);
    const Json report = reportIn(folder);
    std::string body = "<" + operation + "Response xmlns=\"http://tempuri.org/\"><" + operation + "Result>";
    appendBase64(body, folder / output);
    body += "</" + operation + "Result></" + operation + "Response>";
    if (report.is_object())
        spdlog::info("Conversion: {}", cleaned(report.value("summary", std::string())));
    return {200, envelope(std::move(body), soapHeader(report)), replyHeaders(report)};
}

void Conversion::runConverter(const Call& call, const std::string& input, const std::string& output,
    const std::filesystem::path& folder)
{
    const std::string codePage = codePageFor(call, options_);
    using std::chrono::steady_clock;
    const std::chrono::seconds patience(options_.conversionTimeLimit);
    const auto arrival = steady_clock::now();
    const auto isWanted = [&call] { return !call.clientIsGone(); };
    const Turns::Turn turn(turns_, call.client(), arrival + patience, isWanted);
    if (turn.outcome() == Turns::Outcome::Unwanted)
        throw Refusal("The client has gone");
    if (turn.outcome() != Turns::Outcome::Taken)
        throw busy("Too many drawings are waiting to be converted; try again later");
    const auto waited = std::chrono::duration_cast<std::chrono::seconds>(steady_clock::now() - arrival);

    if (!std::filesystem::exists(converter_))
        throw std::runtime_error("There is no converter at " + converter_.string());
    const std::filesystem::path reasons = folder / "reason";
    std::vector<std::string> command{
        node_.string(), converter_.string(), input, output, "--report", "report.json"};
    if (!codePage.empty())
        command.insert(command.end(), {"--codepage", codePage});
    const ChildLimits limits = {arrival + patience, patience * processorsAtOnce, converterMemory,
        converterSpace, converterThreads, converterFiles};
    const ChildOutcome outcome = runChild(command, folder, reasons, limits, cage_, isWanted);
    if (outcome == ChildOutcome::Unwanted)
        throw Refusal("The client has gone");
    // The client's patience counts from the beginning, so one that waited had less time to be converted.
    if (outcome == ChildOutcome::OutOfTime && waited.count() > 0)
        throw busy("The drawing waited " + std::to_string(waited.count())
            + " s for others and could not be finished in the rest of the time; try again later");
    if (outcome == ChildOutcome::OutOfTime)
        throw Refusal("The drawing takes too long to convert");
    if (outcome == ChildOutcome::Killed)
        throw Refusal("The drawing needs too much memory or space to convert");
    if (outcome == ChildOutcome::Succeeded)
        return;
    const std::string reason = beginningOf(reasons, longestReason);
    if (reason.empty())
        throw std::runtime_error("The converter ended without a reason; is node installed?");
    throw Refusal(reason.substr(0, reason.find('\n')));
}

} // namespace local_platform
