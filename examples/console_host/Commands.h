// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

class CloudFileManger;

/// The name under which this host's projects stand on the platform.
extern const QString softName;

/// What can be asked of this program on the command line.
struct Command
{
    QString name;
    QStringList arguments;
    QString help;
    /// Does it with the user signed in; false when it failed and the reason has been told.
    bool (*run)(const QStringList& arguments);
    /// Whether signing in and out are told as steps too.
    bool narrated = false;
};

QVector<Command> commands();

/// A client of the signed-in user on the project \a projectId, or on none yet.
CloudFileManger clientOn(const QString& projectId = QString());

/// Tells that \a what failed and why, and returns false.
bool failed(const QString& what, const QString& reason);

/// Prints \a line.
void say(const QString& line);

/// Runs one step and, when \a narrated, tells what it did and how long it took. A failure is told with its \a
/// reason.
bool step(bool narrated, const QString& what, const std::function<bool()>& run,
    const std::function<QString()>& reason);
