// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudFileManger.h"
#include "ui/account/DialogFixture.h"

/// What the tests of the cloud space dialogs have in common: the platform, a client of it, and the user in
/// front of the dialogs that come up on top. The working directory is an empty folder.
class CloudSpaceFixture : public DialogFixture
{
public:
    /// A client of the software "Soft", with "Current" (7) as its current project.
    void begin();
    QStringList finish() override;

    CloudFileManger& client() { return *manager; }
    void destroyClient() { manager.reset(); }

    /// The platform lists friends and groups, each given as a JSON array.
    void expectLists(const QByteArray& friends = "[]", const QByteArray& groups = "[]");

    /// Lets \a play be the user of the dialog titled \a title, once it is there; it is closed afterwards. The
    /// dialogs come up in the order of the calls; one on top of another comes after it.
    void whenOpened(const QString& title, const std::function<void(QDialog&)>& play);
    /// Chooses \a path in the file dialog titled \a title, once it is there; cancels it when \a path is
    /// empty.
    void whenAsked(const QString& title, const QString& path);

private:
    std::unique_ptr<CloudFileManger> manager;
    QObject polls; ///< owns the timers
    QVector<QPair<QTimer*, QString>> awaited; ///< with the titles
};

/// Shows \a dialog and waits until it has loaded what it shows.
void bringUpLoaded(QDialog& dialog);

/// A test program on the cloud space dialogs: every test begins and ends with the fixture.
class CloudSpaceTest : public QObject
{
    Q_OBJECT

protected slots:
    void initTestCase() { fixture = std::make_unique<CloudSpaceFixture>(); }
    void cleanupTestCase() { fixture.reset(); }
    void init() { fixture->begin(); }
    void cleanup() { fixture->end(); }

protected:
    std::unique_ptr<CloudSpaceFixture> fixture;
};

/// What the platform answers to what it cannot or will not do.
const QByteArray refusal = R"({"code":1,"msg":"<b>no</b>"})";
const QByteArray success = R"({"code":0})";

/// An answer with \a data, which is JSON.
inline QByteArray reply(const QByteArray& data)
{
    return R"({"code":0,"data":)" + data + '}';
}
