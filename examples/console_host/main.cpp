// SPDX-License-Identifier: MIT
// A host without windows: signs in, does one thing in the user's cloud space, signs out.
#include "Commands.h"
#include "Password.h"
#include "account/CloudAccountLogin.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>

namespace {

enum ExitCode
{
    Done = 0,
    Failed = 1,
    Misused = 2,
    NotSignedIn = 3
};

QString usage()
{
    QString text = "Signs in, does one thing in your cloud space, and signs out.\n\nCommands:\n";
    for (const Command& command : commands())
        text += QStringLiteral("  %1%2\n")
                    .arg((QStringList(command.name) + command.arguments).join(' '), -42)
                    .arg(command.help);
    return text
        + "\nThe password is asked for, or taken from the environment variable TAV_PASSWORD.\n"
          "Exit code: 0 done, 1 failed, 2 wrong arguments, 3 not signed in.";
}

int misused(const QString& reason)
{
    failed("Wrong arguments", reason + " (see --help)");
    return Misused;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(usage());
    parser.addHelpOption();
    const QCommandLineOption userOption(
        {"u", "user"}, "The account to sign in with: user name, phone number or e-mail address.", "name");
    const QCommandLineOption codeOption("code", "Sign in with this code instead of a password.", "code");
    parser.addOptions({userOption, codeOption});
    parser.addPositionalArgument(
        "command", "One of the commands above, with its arguments.", "COMMAND [ARGUMENT...]");
    if (!parser.parse(QCoreApplication::arguments()))
        return misused(parser.errorText());
    if (parser.isSet("help"))
        parser.showHelp();

    QStringList arguments = parser.positionalArguments();
    const QString name = arguments.isEmpty() ? QString() : arguments.takeFirst();
    const QVector<Command> all = commands();
    const auto command =
        std::find_if(all.begin(), all.end(), [&](const Command& one) { return one.name == name; });
    if (command == all.end())
        return misused(name.isEmpty() ? "a command is missing" : "there is no command " + name);
    if (arguments.size() != command->arguments.size())
        return misused("it is " + (QStringList(name) + command->arguments).join(' '));
    if (command->session == Command::None)
        return command->run(arguments) ? Done : Failed;
    if (!parser.isSet(userOption))
        return misused("--user is missing");

    CloudAccountLogin* session = CloudAccountLogin::instance();
    const auto reason = [&] { return cloudFailureText(session->getLastFailure(), session->getLastError()); };
    const QByteArray user = parser.value(userOption).toUtf8();
    const QByteArray code = parser.value(codeOption).toLocal8Bit();
    const QByteArray secret = code.isEmpty() ? password() : QByteArray();
    const bool narrated = command->session == Command::Narrated;
    const auto signIn = [&] {
        return code.isEmpty() ? session->userLoginAccount(user.constData(), secret.constData())
                              : session->phoneLoginAccount(user.constData(), code.constData());
    };
    if (!step(narrated, "Sign in as " + parser.value(userOption), signIn, reason))
        return NotSignedIn;
    const bool done = command->run(arguments);
    const bool signedOut = step(
        narrated, "Sign out", [&] { return session->logout(); }, reason);
    return done && signedOut ? Done : Failed;
}
