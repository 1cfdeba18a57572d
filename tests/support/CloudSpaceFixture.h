// SPDX-License-Identifier: MIT
#pragma once

#include "support/DialogSteps.h"

#include "cloud/CloudFileManger.h"

/// What the tests of the cloud space dialogs have in common: the platform, a client of it, and the user of
/// the dialogs that they open. The working directory is an empty folder.
class CloudSpaceFixture : public DialogFixture
{
public:
    /// A client of the software "Soft", with "Current" (7) as its current project.
    void begin();
    QStringList finish() override;

    CloudFileManger& client() { return *manager; }
    void destroyClient() { manager.reset(); }

    /// The steps that must come, in this order. When one comes, \a meanwhile runs before the platform or the
    /// user answers.
    void expect(const Steps& steps, const std::function<void()>& meanwhile = {});
    /// From now on no step may come, and the user does nothing any more.
    void expectNothing();
    /// Does \a acts in \a window, for as long as it exists.
    void act(const QPointer<QDialog>& window, const Acts& acts) const;
    /// Opens such a window and lets it load its contents. \a steps are all that must come, then and later.
    std::unique_ptr<QDialog> open(const Make& make, const Steps& steps);

private:
    void whenOpened(const QString& title, const std::function<void(QDialog&)>& play);

    std::unique_ptr<CloudFileManger> manager;
    Steps sent; ///< the requests that came
    int scheduled = 0, came = 0; ///< numbers of steps
    bool isOver = false; ///< nothing may come any more
    QStringList wrong;
    QObject polls; ///< owns the timers
    QVector<QPair<QTimer*, QString>> awaited; ///< windows that must still come: a timer and a title each
};

/// A test program on the cloud space dialogs: every test begins and ends with the fixture.
class CloudSpaceTest : public QObject
{
    Q_OBJECT

protected slots:
    void init() { fixture->begin(); }
    void cleanup() { fixture->end(); }

protected:
    const std::unique_ptr<CloudSpaceFixture> fixture = std::make_unique<CloudSpaceFixture>();
};
