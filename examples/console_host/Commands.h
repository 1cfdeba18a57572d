// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

class CloudFileManger;

/// What can be asked of this program on the command line.
struct Command
{
    /// Whether the program signs in before the command and out after it, and prints these steps.
    enum Session
    {
        None,
        Quiet,
        Narrated
    };

    QString name;
    QStringList arguments;
    QString help;
    /// Runs the command; false when it failed, after printing the reason.
    bool (*run)(const QStringList& arguments);
    Session session = Quiet;
};

QVector<Command> commands();

/// A client of the signed-in user with \a projectId as its current project; empty for none.
CloudFileManger clientOn(const QString& projectId = QString());

/// Prints \a line.
void say(const QString& line);

/// Prints that \a what failed and why, and returns false.
bool failed(const QString& what, const QString& reason);

/// Returns \a good; when it is false, prints that \a what failed, with the client's reason.
bool succeeded(bool good, const QString& what, const CloudFileManger& client);

/// Runs one step and, when \a narrated, prints what it did and how long it took. A failure is printed with
/// its \a reason.
bool step(bool narrated, const QString& what, const std::function<bool()>& run,
    const std::function<QString()>& reason);

// What the commands do, by family. Each takes its command's arguments.
bool askForCode(const QStringList& address);
bool registerAccount(const QStringList& nameAddressCode);
bool askForResetCode(const QStringList& address);
bool resetPassword(const QStringList& addressCode);

bool shareByCode(const QStringList& projectFileHours);
bool shareWithFriends(const QStringList& projectFileHoursAccounts);
bool shareWithGroup(const QStringList& projectFileHoursGroup);
bool extract(const QStringList& code);
bool tree(const QStringList& none);
bool get(const QStringList& pathFile);

bool friends(const QStringList& none);
bool addFriend(const QStringList& phoneNameCompany);
bool removeFriend(const QStringList& id);
bool groups(const QStringList& none);
bool createGroup(const QStringList& name);
bool invite(const QStringList& group);
bool join(const QStringList& code);
bool leave(const QStringList& group);

bool convert(const QStringList& drawing);
