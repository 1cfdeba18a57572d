// SPDX-License-Identifier: MIT
#include "Platform.h"
#include "admin/Backup.h"
#include "admin/CheckConfig.h"
#include "admin/Verify.h"
#include "base/Options.h"
#include "base/ServiceManager.h"
#include "base/Text.h"
#include "http/Server.h"
#include "store/Secrets.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
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
    app.add_flag(
        "--allow-insecure", options.allowInsecure, "serve other machines in spite of what is warned of");
    app.set_config("--config", "", "file of options, one \"name = value\" a line");
    app.allow_config_extras(CLI::config_extras_mode::error);
    app.set_version_flag("--version", "tav-local-platform " TAV_PLATFORM_VERSION);

    CLI::Option* certificate =
        app.add_option("--tls-certificate", options.tlsCertificate, "PEM file; serve HTTPS");
    CLI::Option* key = app.add_option("--tls-key", options.tlsKey, "PEM file of the certificate's key");
    certificate->needs(key)->check(CLI::ExistingFile);
    key->needs(certificate)->check(CLI::ExistingFile);

    app.add_option("--max-connections", options.maxConnections, "at a time, from all addresses")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
    app.add_option("--max-connections-per-address", options.maxConnectionsPerAddress,
           "at a time, from one IPv4 address or IPv6 network of 64 bits")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
    app.add_option("--head-time-limit", options.headTimeLimit,
           "seconds from the first byte to the end of a request's head")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    app.add_option("--stall-time-limit", options.stallTimeLimit,
           "seconds over which a body, either way, must come to 1 KiB/s")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    app.add_option("--max-file-size", options.maxFileSize, "bytes of one uploaded file")
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 40))
        ->capture_default_str();
    app.add_option("--trash-age", options.trashAge, "days that a replaced file stays in the trash")
        ->check(CLI::Range(0, 36500))
        ->capture_default_str();
    app.add_option("--token-lifetime", options.tokenLifetime, "seconds")
        ->check(CLI::Range(1, 315360000))
        ->capture_default_str();
    app.add_option("--code-lifetime", options.codeLifetime, "seconds")
        ->check(CLI::Range(1, 86400))
        ->capture_default_str();
    app.add_option("--client-credential", options.clientCredential, "Authorization of the account requests")
        ->envname("TAV_CLIENT_CREDENTIAL");
    app.add_option("--refresh-bearer", options.refreshBearer, "Authorization of the token refresh")
        ->envname("TAV_REFRESH_BEARER");
    app.add_option("--cipher-key", options.cipherKey, "16 bytes; clients encipher passwords with it")
        ->envname("TAV_CIPHER_KEY")
        ->check([](const std::string& text) {
            return text.size() == 16 ? std::string() : "The account cipher key must have 16 bytes";
        });

    app.add_option(
           "--converter", options.converter, "script that converts drawings, run as: node SCRIPT IN OUT")
        ->capture_default_str();
    app.add_option("--max-drawing-size", options.maxDrawingSize, "bytes of one drawing to convert")
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1} << 40))
        ->capture_default_str();
    app.add_option("--conversion-time-limit", options.conversionTimeLimit, "seconds")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    app.add_option("--conversions-at-once", options.conversionsAtOnce, "0: as many as there are processors")
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
    app.add_option("--conversion-queue", options.conversionQueue, "drawings that wait for their turn")
        ->check(CLI::Range(0, 10000))
        ->capture_default_str();
    app.add_option("--conversions-per-hour", options.conversionsPerHour, "of one address")
        ->check(CLI::Range(0, 1000000000))
        ->capture_default_str();
    app.add_option("--drawing-code-page", options.drawingCodePage,
        "of texts in DGN files, such as gbk; guessed from each file unless told");

    app.add_option(
           "--clock-offset", options.clockOffset, "seconds by which the platform's clock is ahead; for tests")
        ->capture_default_str();
    app.add_option("--log-level", logLevel)
        ->check(CLI::IsMember({"trace", "debug", "info", "warning", "error", "off"}))
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

/// The level of a message as the journal wants it.
class LevelForJournal : public spdlog::custom_flag_formatter
{
public:
    void format(const spdlog::details::log_msg& message, const std::tm&, spdlog::memory_buf_t& to) override
    {
        static constexpr char levels[] = {'7', '7', '6', '4', '3', '2', '7'};
        const char prefix[] = {'<', levels[message.level], '>'};
        to.append(prefix, prefix + sizeof prefix);
    }
    std::unique_ptr<custom_flag_formatter> clone() const override
    {
        return std::make_unique<LevelForJournal>();
    }
};

void startLog(const std::string& level)
{
    auto formatter = std::make_unique<spdlog::pattern_formatter>();
    formatter->add_flag<MessageOnOneLine>('*').add_flag<LevelForJournal>('J').set_pattern(
        local_platform::logsToJournal() ? "%J%*" : "[%Y-%m-%d %H:%M:%S.%e] [%n] [%^%l%$] %*");
    spdlog::set_default_logger(spdlog::stderr_color_mt("platform"));
    spdlog::set_formatter(std::move(formatter));
    spdlog::set_level(spdlog::level::from_str(level));
}

/// Everybody on the machine reads the arguments of its programs.
void refuseSecretsAmong(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
        for (const std::string name : {"--client-credential", "--refresh-bearer", "--cipher-key"})
            if (local_platform::startsWith(argv[i], name))
                throw std::invalid_argument("Everybody on this machine could read " + name
                    + " among the arguments: put it into a file for --config or into the environment");
}

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description)
{
    return app.add_subcommand(name, description)->fallthrough();
}

/// What the file of options says of the log by now.
void reloadLogLevel(int argc, char** argv)
{
    CLI::App app;
    Options options;
    std::string level = "info";
    addOptions(app, options, level);
    try {
        app.parse(argc, argv);
        spdlog::set_level(spdlog::level::from_str(level));
        spdlog::info("The log level is {}", level);
    } catch (const CLI::Error& error) {
        spdlog::error("The options stay as they are: {}", error.what());
    }
}

/// @param reload done for each SIGHUP; without it, that ends the platform as well
int run(const Options& options, const std::function<void()>& reload)
{
    // Blocked before any thread starts, so that all inherit it and the signals wait for sigwait below.
    sigset_t endings;
    sigemptyset(&endings);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&endings, signal);
    pthread_sigmask(SIG_BLOCK, &endings, nullptr);

    local_platform::initializeSecrets();
    local_platform::Platform platform(options);
    local_platform::Server server(
        [&](local_platform::Call& call) -> const local_platform::Route& { return platform.admit(call); },
        options);
    server.start();
    std::cout << "tav-local-platform ready on " << server.address() << std::endl;

    local_platform::tellServiceManager("READY=1\nSTATUS=Ready on " + server.address());

    int signal = 0;
    while (sigwait(&endings, &signal) == 0 && signal == SIGHUP && reload)
        reload();
    local_platform::tellServiceManager("STOPPING=1");
    if (!server.stop()) {
        spdlog::warn("Work that does not end is cut off");
        std::_Exit(0);
    }
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
    bool check = false;
    app.add_flag("--check-config", check, "say whether the platform would start with these options, and end");
    app.require_subcommand(0, 1);
    std::filesystem::path folder;
    const CLI::App* verify = addCommand(app, "verify", "compare each stored file with its digest");
    CLI::App* backup = addCommand(app, "backup", "copy all that a platform keeps, also while it runs");
    backup->add_option("folder", folder, "a new or empty folder")->required();
    CLI::App* restore = addCommand(app, "restore", "make a data folder of a backup");
    restore->add_option("folder", folder, "the backup")->required();
    refuseSecretsAmong(argc, argv);
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
    if (check)
        return local_platform::checkConfig(options);
    const bool hasFile = app.get_config_ptr()->count() != 0;
    return run(options, hasFile ? [=] { reloadLogLevel(argc, argv); } : std::function<void()>());
} catch (const std::exception& error) {
    std::fprintf(stderr, "tav-local-platform: %s\n", local_platform::oneLine(error.what()).c_str());
    return 1;
}
