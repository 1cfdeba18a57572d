// SPDX-License-Identifier: MIT
#include "admin/Administration.h"
#include "base/Options.h"
#include "base/Text.h"
#include "features/AccountCipher.h"
#include "store/Secrets.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>
#include <stdexcept>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace {

using local_platform::Administration;
using Json = Administration::Json;

std::string textOf(const Json& value)
{
    return local_platform::oneLine(value.is_string() ? value.get<std::string>() : value.dump());
}

/// Characters, not bytes; those that are two columns wide count as one.
std::size_t widthOf(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

void printTable(const Json& list)
{
    if (list.empty()) {
        std::cout << "none\n";
        return;
    }
    std::vector<std::vector<std::string>> lines(1);
    for (const auto& [name, value] : list.front().items())
        lines.front().push_back(name);
    for (const Json& object : list) {
        lines.emplace_back();
        for (const auto& [name, value] : object.items())
            lines.back().push_back(textOf(value));
    }
    std::vector<std::size_t> widths(lines.front().size());
    for (const auto& line : lines)
        for (std::size_t i = 0; i < line.size(); ++i)
            widths[i] = std::max(widths[i], widthOf(line[i]));
    for (const auto& line : lines) {
        std::string text;
        for (std::size_t i = 0; i < line.size(); ++i)
            text += line[i] + std::string(i + 1 < line.size() ? widths[i] - widthOf(line[i]) + 2 : 0, ' ');
        std::cout << text << '\n';
    }
}

void print(const Json& list, bool asJson)
{
    if (asJson)
        std::cout << list.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    else
        printTable(list);
}

/// Shown to nobody where it is typed.
std::string readPassword()
{
    const bool isTyped = ::isatty(STDIN_FILENO) != 0;
    termios before = {};
    if (isTyped && ::tcgetattr(STDIN_FILENO, &before) == 0) {
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        std::cerr << "New password: " << std::flush;
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    std::string password;
    std::getline(std::cin, password);
    if (isTyped) {
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
        std::cerr << '\n';
    }
    if (password.empty())
        throw std::runtime_error("A password is wanted on the standard input");
    return password;
}

void confirm(const std::string& what, bool isSure)
{
    if (isSure)
        return;
    std::string answer;
    if (::isatty(STDIN_FILENO) != 0) {
        std::cerr << what << " [y/N] " << std::flush;
        std::getline(std::cin, answer);
    }
    if (answer != "y" && answer != "Y")
        throw std::runtime_error("Nothing was done; --yes does it without asking");
}

} // namespace

int main(int argc, char** argv)
try {
    CLI::App app("Looks after the accounts, sessions, shares and projects of a tav-local-platform");
    std::string data = local_platform::Options().data.string();
    std::string cipherKey = local_platform::Options().cipherKey;
    bool asJson = false;
    bool isSure = false;
    app.set_version_flag("--version", "tav-platform-admin " TAV_PLATFORM_VERSION);
    app.add_option("--data", data, "the platform's data folder")->capture_default_str();
    app.add_flag("--json", asJson, "print lists as JSON");
    app.add_flag("--yes", isSure, "do not ask before something is destroyed");
    // Everybody on the machine reads the arguments of its programs.
    if (const char* const key = std::getenv("TAV_CIPHER_KEY"))
        cipherKey = key;
    app.require_subcommand(1);

    std::string user;
    std::string phone;
    std::string mail;
    std::string session;
    long long id = 0;
    std::map<const CLI::App*, std::function<void(Administration&)>> actions;
    const auto group = [&](const std::string& name, const std::string& what) {
        return app.add_subcommand(name, what)->fallthrough()->require_subcommand(1);
    };
    const auto command = [&](CLI::App* of, const std::string& name, const std::string& what,
                             std::function<void(Administration&)> action) {
        CLI::App* const added = of->add_subcommand(name, what)->fallthrough();
        actions[added] = std::move(action);
        return added;
    };
    const auto password = [&] { return local_platform::clientCipherText(readPassword(), cipherKey); };
    const auto done = [](const std::string& what) { std::cout << local_platform::oneLine(what) << '\n'; };

    CLI::App* const users = group("user", "accounts");
    command(users, "list", "all accounts", [&](Administration& a) { print(a.users(), asJson); });
    CLI::App* add = command(
        users, "add", "a new account; its password comes on the standard input", [&](Administration& a) {
            a.addUser({user, password(), phone, mail});
            done("Added " + user);
        });
    add->add_option("--phone", phone);
    add->add_option("--mail", mail);
    CLI::App* disable = command(users, "disable", "sign out, and let nobody sign in", [&](Administration& a) {
        a.setDisabled(user, true);
        done("Disabled " + user);
    });
    CLI::App* enable = command(users, "enable", "let a disabled one sign in again", [&](Administration& a) {
        a.setDisabled(user, false);
        done("Enabled " + user);
    });
    CLI::App* reset = command(users, "reset-password", "a new password, from the standard input; signs out",
        [&](Administration& a) {
            a.setPassword(user, password());
            done("Reset the password of " + user);
        });
    for (CLI::App* const one : {add, disable, enable, reset})
        one->add_option("user", user, "user name, phone number or mail address")->required();

    CLI::App* const sessions = group("session", "who is signed in");
    command(sessions, "list", "all sessions", [&](Administration& a) { print(a.sessions(), asJson); });
    CLI::App* end = command(sessions, "end", "one session, or all of a user", [&](Administration& a) {
        const long long ended = session.empty() ? a.endSessionsOf(user) : a.endSession(session);
        if (ended == 0)
            throw std::runtime_error("There is no such session");
        done("Ended " + std::to_string(ended));
    });
    CLI::Option* const bySession = end->add_option("id", session);
    CLI::Option* const byUser = end->add_option("--user", user, "all of this one")->excludes(bySession);
    end->callback([=] {
        if (bySession->count() + byUser->count() == 0)
            throw CLI::RequiredError("id or --user");
    });

    CLI::App* const shares = group("share", "shares that have not ended");
    command(shares, "list", "all shares", [&](Administration& a) { print(a.shares(), asJson); });
    CLI::App* revoke =
        command(shares, "revoke", "end one; its files stay with their owner", [&](Administration& a) {
            confirm("Revoke share " + std::to_string(id) + "?", isSure);
            a.revokeShare(id);
            done("Revoked " + std::to_string(id));
        });
    revoke->add_option("id", id)->required();

    CLI::App* const projects = group("project", "projects and their files");
    command(projects, "list", "all projects", [&](Administration& a) { print(a.projects(), asJson); });
    CLI::App* remove =
        command(projects, "delete", "one with its shares; its files go to the trash", [&](Administration& a) {
            confirm("Delete project " + std::to_string(id) + " with all its files and shares?", isSure);
            a.deleteProject(id);
            done("Deleted " + std::to_string(id));
        });
    remove->add_option("id", id)->required();

    command(
        &app, "stats", "how many of each there are", [&](Administration& a) { print(a.stats(), asJson); });
    CLI11_PARSE(app, argc, argv);

    ::umask(077);
    spdlog::set_default_logger(spdlog::stderr_color_mt("admin"));
    local_platform::initializeSecrets();
    Administration administration(data);
    for (const auto& [chosen, action] : actions)
        if (*chosen)
            action(administration);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "tav-platform-admin: %s\n", local_platform::oneLine(error.what()).c_str());
    return 1;
}
