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
    /// Whether the user is signed in before and out after, and told so.
    enum Session
    {
        None,
        Quiet,
        Told
    };

    QString name;
    QStringList arguments;
    QString help;
    /// Does it; false when it failed and the reason has been told.
    bool (*run)(const QStringList& arguments);
    Session session = Quiet;
};

QVector<Command> commands();

/// A client of the signed-in user on the project \a projectId, or on none yet.
CloudFileManger clientOn(const QString& projectId = QString());

/// Prints \a line.
void say(const QString& line);

/// Tells that \a what failed and why, and returns false.
bool failed(const QString& what, const QString& reason);

/// \a good; when it is false, tells that \a what failed, with the client's reason.
bool told(bool good, const QString& what, const CloudFileManger& client);

/// Runs one step and, when \a narrated, tells what it did and how long it took. A failure is told with its
/// \a reason.
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
