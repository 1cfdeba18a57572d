// SPDX-License-Identifier: MIT
// Two drafters, alice and bob, share drawings at the windows of the desktop host, and what bob downloads is
// compared with what alice shared. Needs the platform's demo accounts, bob among alice's friends, and a group
// of the two.
#include "Drafter.h"
#include "MainWindow.h"

namespace {

void step(const QString& what, const std::function<void()>& run)
{
    QElapsedTimer timer;
    timer.start();
    try {
        run();
    } catch (const Astray& reason) {
        throw Astray(what + ": " + reason.what());
    }
    QTextStream(stdout)
        << QStringLiteral("  %1 %2 ms\n").arg(what, -56).arg(double(timer.nsecsElapsed()) / 1e6, 8, 'f', 1);
}

void signIn(Drafter& drafter, const QString& user)
{
    drafter.choose("Sign In");
    drafter.open("Login by password");
    drafter.type("Phone number/email", user);
    drafter.type("Password", "demo-" + user + "-1");
    drafter.picture(user + "-signs-in");
    drafter.press("Login");
    drafter.confirm("login successfully!");
    drafter.see("Signed in as " + user);
}

void signOut(Drafter& drafter)
{
    drafter.choose("Sign Out");
    drafter.press("Logout");
    drafter.confirm("exit successfully!");
    drafter.see("Not signed in");
}

/// Shares from the page that is open, and takes \a project for it.
void share(Drafter& drafter, const QString& drawing, const QString& project)
{
    drafter.type("Choose to Share files", drawing);
    drafter.picture("alice-shares");
    drafter.press("Share");
    drafter.see("Please select a cloud project");
    drafter.clickRowOf(project);
    drafter.picture("alice-takes-a-project");
    drafter.press("OK");
}

void openFolder(Drafter& drafter, const QString& name)
{
    drafter.press(name); // selects it
    drafter.press(name);
}

void compare(const QString& path, const QString& otherPath)
{
    QFile file(path);
    QFile other(otherPath);
    if (!file.open(QIODevice::ReadOnly) || !other.open(QIODevice::ReadOnly)
        || file.readAll() != other.readAll())
        throw Astray(otherPath + " is not what was shared");
}

/// \param drawing what to back up
/// \param names what to share by code, with bob and with the group: copies of it in \a folder
void journey(Drafter& drafter, const QString& drawing, const QStringList& names, const QTemporaryDir& folder)
{
    const QString project = QFileInfo(drawing).fileName(); // that is where the desktop host backs it up
    QString code;

    step("alice signs in", [&] {
        signIn(drafter, "alice");
        drafter.picture("alice-drawings");
    });
    step("alice backs her drawing up", [&] {
        drafter.choose("Back Up to the Cloud");
        drafter.choose("My Cloud Space"); // once that is done
        drafter.press("ConsoleHost"); // what the console host shared with her, by the group
        drafter.picture("alice-space");
    });
    step("alice shares one by code", [&] {
        drafter.open("Share");
        drafter.press("Anonymous share");
        share(drafter, folder.filePath(names[0]), project);
        code = drafter.confirm("Fetch Code:", "alice-has-a-code").section('\n', 0, 0);
        drafter.confirm("Please go to my Cloud space to view the uploaded file.");
    });
    step("alice shares one with bob, her friend", [&] {
        drafter.press("Share To friends");
        drafter.clickRowOf("bob");
        share(drafter, folder.filePath(names[1]), project);
        drafter.confirm("Share successfully!");
    });
    step("alice shares one with the group", [&] {
        drafter.press("Share To groups");
        drafter.clickRowOf("Site office");
        share(drafter, folder.filePath(names[2]), project);
        drafter.confirm("Share successfully!");
        drafter.close();
    });
    step("alice signs out, bob signs in", [&] {
        signOut(drafter);
        signIn(drafter, "bob");
    });
    step("bob extracts by the code", [&] {
        drafter.choose("My Cloud Space");
        drafter.open("Share");
        drafter.press("Anonymous share");
        drafter.type("Input extraction code", code);
        drafter.picture("bob-extracts");
        drafter.press("Extract");
        drafter.confirm("Extraction successfully! Please go to My Cloud space to view the file");
    });
    step("bob finds all three in his space", [&] {
        drafter.open("My cloud space");
        openFolder(drafter, "DesktopHost");
        openFolder(drafter, project);
        for (const QString& name : names)
            drafter.press(name);
        drafter.picture("bob-finds-them");
    });
    step("bob downloads the folder", [&] {
        drafter.press("back");
        drafter.press(project);
        drafter.press("Download");
        drafter.acceptFolder(folder.path());
        drafter.confirm("The download is complete!", "bob-has-them");
    });
    step("The same, byte for byte", [&] {
        for (const QString& name : names)
            compare(drawing, folder.filePath(project + '/' + name));
    });
    step("bob signs out", [&] {
        drafter.close();
        signOut(drafter);
    });
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QString drawing = QApplication::arguments().value(1);
    const QString pictures = QApplication::arguments().value(2);
    const QTemporaryDir folder;
    QStringList names;
    for (const char* purpose : {"by-code-", "for-bob-", "for-the-group-"}) {
        names += purpose + QFileInfo(drawing).fileName();
        if (QDir().mkpath(pictures) && QFile::copy(drawing, folder.filePath(names.last())))
            continue;
        std::fputs("Usage: tav-desktop-journey DRAWING PICTURES\n", stderr);
        return 2;
    }
    MainWindow window;
    window.addDrawings({drawing});
    window.show();

    const std::unique_ptr<QThread> drafters(QThread::create([&] {
        Drafter drafter(&window, pictures);
        try {
            journey(drafter, drawing, names, folder);
        } catch (const Astray& reason) {
            std::fprintf(stderr, "%s\n", reason.what());
            std::_Exit(1); // whatever windows are open
        }
    }));
    QObject::connect(drafters.get(), &QThread::finished, &application, &QApplication::quit);
    drafters->start();
    QApplication::exec();
    drafters->wait();
    return 0;
}
