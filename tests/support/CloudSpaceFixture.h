// SPDX-License-Identifier: MIT
#pragma once

#include "support/DialogSteps.h"

#include "cloud/CloudFileManger.h"

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

    /// What is to come, in this order. Once a step is there, \a meanwhile runs: before the platform answers,
    /// or the user does.
    void expect(const Steps& steps, const std::function<void()>& meanwhile = {});
    /// Nothing any more, and the user does nothing any more; what comes all the same is wrong.
    void expectNothing();
    /// The user of \a window does that, as long as it is there.
    void act(const QPointer<QDialog>& window, const Acts& acts) const;
    /// Such a window, once it has loaded what it shows. \a steps are what comes before that and after.
    std::unique_ptr<QDialog> open(const Make& make, const Steps& steps);

private:
    void whenOpened(const QString& title, const std::function<void(QDialog&)>& play);

    std::unique_ptr<CloudFileManger> manager;
    Steps sent; ///< the requests
    int scheduled = 0, came = 0; ///< steps
    bool isOver = false;
    QStringList wrong;
    QObject polls; ///< owns the timers
    QVector<QPair<QTimer*, QString>> awaited; ///< with the titles
};

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
