// SPDX-License-Identifier: MIT
#include "Platform.h"
#include "admin/Backup.h"
#include "admin/Verify.h"
#include "base/Options.h"
#include "base/Text.h"
#include "http/Server.h"
#include "store/Secrets.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>
#include <sys/stat.h>

namespace {

using local_platform::Options;

/// The converter installed with this program; in a build directory, the one in the sources.
std::string converter()
{
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const auto installed =
        program.parent_path().parent_path() / "share/tav-local-platform/conversion/convert.mjs";
    return std::filesystem::exists(installed, ignored) ? installed.string() : TAV_CONVERTER;
}

void addOptions(CLI::App& app, Options& options, std::string& logLevel)
{
    app.add_option("--listen", options.listen, "host:port; port 0 takes any free one")->capture_default_str();
    app.add_option("--data", options.data, "directory of all that the platform keeps")->capture_default_str();
    app.add_option(
        "--outbox", options.outbox, "directory for codes \"sent\" by SMS and mail; default: DATA/outbox");
    app.add_flag("--demo-accounts", options.demoAccounts, "add the accounts alice, bob and carol");

    CLI::Option* certificate =
        app.add_option("--tls-certificate", options.tlsCertificate, "PEM file; serve HTTPS");
    CLI::Option* key = app.add_option("--tls-key", options.tlsKey, "PEM file of the certificate's key");
    certificate->needs(key)->check(CLI::ExistingFile);
    key->needs(certificate)->check(CLI::ExistingFile);

    app.add_option("--max-file-size", options.maxFileSize, "bytes of one uploaded file")
        ->capture_default_str();
    app.add_option("--trash-age", options.trashAge, "days that a replaced file stays in the trash")
        ->check(CLI::Range(0, 36500))
        ->capture_default_str();
    app.add_option("--token-lifetime", options.tokenLifetime, "seconds")->capture_default_str();
    app.add_option("--code-lifetime", options.codeLifetime, "seconds")->capture_default_str();
    app.add_option("--client-credential", options.clientCredential, "Authorization of the account requests");
    app.add_option("--refresh-bearer", options.refreshBearer, "Authorization of the token refresh");
    app.add_option("--cipher-key", options.cipherKey, "16 bytes; clients encipher passwords with it")
        ->check([](const std::string& text) {
            return text.size() == 16 ? std::string() : "The account cipher key must have 16 bytes";
        });

    app.add_option(
           "--converter", options.converter, "script that converts drawings, run as: node SCRIPT IN OUT")
        ->capture_default_str();
    app.add_option("--max-drawing-size", options.maxDrawingSize, "bytes of one drawing to convert")
        ->capture_default_str();
    app.add_option("--conversion-time-limit", options.conversionTimeLimit, "seconds")->capture_default_str();

    app.add_option(
           "--clock-offset", options.clockOffset, "seconds by which the platform's clock is ahead; for tests")
        ->capture_default_str();
    app.add_option("--log-level", logLevel)
        ->check(CLI::IsMember({"debug", "info", "warning", "error", "off"}))
        ->capture_default_str();
}

/// The text of a message as one line, whatever a client put into it.
class MessageOnOneLine : public spdlog::custom_flag_formatter
{
public:
    void format(const spdlog::details::log_msg& message, const std::tm&, spdlog::memory_buf_t& to) override
    {
        const std::string line = local_platform::oneLine({message.payload.data(), message.payload.size()});
        to.append(line.data(), line.data() + line.size());
    }
    std::unique_ptr<custom_flag_formatter> clone() const override
    {
        return std::make_unique<MessageOnOneLine>();
    }
};

void startLog(const std::string& level)
{
    auto formatter = std::make_unique<spdlog::pattern_formatter>();
    formatter->add_flag<MessageOnOneLine>('*').set_pattern("[%Y-%m-%d %H:%M:%S.%e] [%n] [%^%l%$] %*");
    spdlog::set_default_logger(spdlog::stderr_color_mt("platform"));
    spdlog::set_formatter(std::move(formatter));
    spdlog::set_level(spdlog::level::from_str(level));
}

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description)
{
    return app.add_subcommand(name, description)->fallthrough();
}

int run(const Options& options)
{
    // Blocked before any thread starts, so that all inherit it and the signals wait for sigwait below.
    sigset_t endings;
    sigemptyset(&endings);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&endings, signal);
    pthread_sigmask(SIG_BLOCK, &endings, nullptr);

    local_platform::initializeSecrets();
    local_platform::Platform platform(options);
    local_platform::Server server([&](local_platform::Call& call) { return platform.answer(call); }, options);
    server.start();
    std::cout << "tav-local-platform ready on " << server.address() << std::endl;

    int signal = 0;
    sigwait(&endings, &signal);
    server.stop();
    return 0;
}

} // namespace

int main(int argc, char** argv)
try {
    CLI::App app("The cloud platform on one machine, for developers and tests");
    Options options;
    options.converter = converter();
    std::string logLevel = "info";
    addOptions(app, options, logLevel);
    app.require_subcommand(0, 1);
    std::filesystem::path folder;
    const CLI::App* verify = addCommand(app, "verify", "compare each stored file with its digest");
    CLI::App* backup = addCommand(app, "backup", "copy all that a platform keeps, also while it runs");
    backup->add_option("folder", folder, "a new or empty folder")->required();
    CLI::App* restore = addCommand(app, "restore", "make a data folder of a backup");
    restore->add_option("folder", folder, "the backup")->required();
    CLI11_PARSE(app, argc, argv);

    // What is written is for the platform's own account alone.
    ::umask(077);
    startLog(logLevel);
    if (*verify)
        return local_platform::verify(options.data);
    if (*backup)
        return local_platform::copyDataFolder(options.data, folder, local_platform::Copying::MayLink);
    if (*restore)
        return local_platform::copyDataFolder(folder, options.data, local_platform::Copying::Copies);
    return run(options);
} catch (const std::exception& error) {
    std::fprintf(stderr, "tav-local-platform: %s\n", local_platform::oneLine(error.what()).c_str());
    return 1;
}
