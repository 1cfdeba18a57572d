// SPDX-License-Identifier: MIT
#include "features/SoapDrawing.h"
#include "http/Call.h"
#include "http/Envelope.h"
#include "http/HeadScan.h"
#include "http/Ranges.h"
#include "http/RequestParser.h"

#include <fuzzer/FuzzedDataProvider.h>

using namespace local_platform;

/// The input is what comes in on a connection, in pieces. Any exception but a refusal is a finding.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const FileStore files = [] {
        std::filesystem::create_directory("incoming");
        return FileStore(".", 500);
    }();
    FuzzedDataProvider input(data, size);
    const int kind = input.ConsumeIntegralInRange(0, 2);
    const auto pieceSize = input.ConsumeIntegralInRange<std::size_t>(1, 4096);
    std::string received;
    const auto receive = [&] {
        const std::string piece = input.ConsumeBytesAsString(pieceSize);
        received += piece;
        return !piece.empty();
    };
    try {
        HeadScan scan;
        std::size_t headSize = 0;
        while ((headSize = scan.endOf(received)) == 0)
            if (!receive())
                return 0;
        RequestParser parser;
        Call call(parser.head(received.substr(0, headSize)));
        received.erase(0, headSize);
        partOf(1000, call.header("Range"));
        const BodyUse uses[]{{&files, {}, 0}, {nullptr, ".", 1000}, {}};
        Intake* const intake = call.takeBodyAs(uses[kind]);
        for (std::string content;; content.clear()) {
            parser.body(received, content);
            if (intake)
                intake->append(content.data(), content.size());
            if (parser.isDone())
                break;
            if (!receive())
                return 0;
        }
        if (kind == 0)
            call.upload().file->finish();
        if (kind == 2)
            call.form().list("userNames");
        SoapDrawing drawing("drawing", 500);
        call.read([&](const char* bytes, std::size_t count) { drawing.append(bytes, count); });
        drawing.finish();
    } catch (const Refusal&) {
    }
    return 0;
}
