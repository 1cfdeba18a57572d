// SPDX-License-Identifier: MIT
#include "features/SoapDrawing.h"
#include "http/Call.h"
#include "http/Envelope.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <httplib.h>

using namespace local_platform;

/// The input is a body as the HTTP library hands it on: in parts and pieces, whole or cut. Any exception but
/// a refusal is a finding.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const auto readPieces = [&](const httplib::ContentReceiver& take) {
        while (input.ConsumeBool()) {
            const std::string piece = input.ConsumeRandomLengthString();
            take(piece.data(), piece.size());
        }
        return input.ConsumeBool();
    };
    const httplib::ContentReader body(readPieces, [&](const auto& begin, const auto& take) {
        while (input.ConsumeBool()) {
            begin({input.ConsumeRandomLengthString(), "", input.ConsumeRandomLengthString(), ""});
            readPieces(take);
        }
        return input.ConsumeBool();
    });
    httplib::Request request;
    const std::string type = input.ConsumeBool() ? "multipart/form-data" : "";
    request.headers = {{"Content-Length", "1"}, {"Content-Type", type}};
    const int kind = input.ConsumeIntegralInRange(0, 2);
    Call call(request, &body);
    try {
        static const FileStore files = [] {
            std::filesystem::create_directory("incoming");
            return FileStore(".", 500);
        }();
        SoapDrawing drawing("drawing", 500);
        if (kind == 0)
            call.upload(files).file->finish();
        if (kind == 1)
            call.form().list("userNames");
        call.read([&](const char* bytes, std::size_t count) { drawing.append(bytes, count); });
        drawing.finish();
    } catch (const Refusal&) {
    }
    call.finish();
    return 0;
}
