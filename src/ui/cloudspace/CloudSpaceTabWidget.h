// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudHandle.h"
#include "ui/BlockingCall.h"

#include <QList>
#include <QStringList>
#include <QWidget>

#include <memory>

class ITreeElement;
class QClipboard;
class QGridLayout;
class QLineEdit;
class QPushButton;
class TavFileButton;

namespace tav {
class TileArea;
class TransferDialog;
class WindowNote;
} // namespace tav

/// Shows the cloud file tree, a folder at a time, as a grid of tiles, and downloads what is selected.
class CloudSpaceTabWidget : public QWidget
{
    Q_OBJECT

public:
    /// Asks the platform for the tree.
    CloudSpaceTabWidget(CloudFileManger* manager, QClipboard* clipboard, QWidget* parent);
    ~CloudSpaceTabWidget() override;

    // Private to everything but the dialog, which refreshes the tab when something was shared or extracted.
    friend class DlgMyCloudSpace;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void _onClicked(QString name);
    void _onSelect(QString name);
    void _onGetBlack();
    void _onDownload();
    void _onRefresh();

private:
    struct Missed
    {
        QString description;
        QString reason; ///< empty when the user knows why
        const ITreeElement* file; ///< to try again; null when trying again would not help
        QString target;
    };

    void showFolder(ITreeElement* element);
    void updateButtons();
    bool hasFocusInTiles() const;
    TavFileButton* selectedTile() const;
    void placeTiles(const ITreeElement* folder);
    void clearTiles();
    TavFileButton* senderTile() const;
    ITreeElement* childOfCurrent(const QString& name) const;
    tav::Outcome downloadTreeElement(
        const ITreeElement* element, const QString& directory, const QString& description);
    tav::Outcome downloadFile(const ITreeElement* file, const QString& target, const QString& description);
    bool wantsToTryAgain();
    tav::Outcome downloadAgain();
    tav::Outcome miss(const Missed& one);
    void tell(const QString& text);
    QString missedText() const;

    // In tab order, which is the order of construction.
    QPushButton* backButton;
    QLineEdit* pathEdit;
    QGridLayout* tileGrid;
    tav::TileArea* tileArea;
    QPushButton* refreshButton;
    QPushButton* downloadButton;
    tav::CloudHandle client;
    std::shared_ptr<ITreeElement> tree;
    QList<ITreeElement*> navigationStack; // from the root to the folder on screen, borrowed from the tree
    QList<TavFileButton*> tileList;
    QClipboard* clipboard; // not used here
    QPointer<tav::WindowNote> note;
    // Of the last download:
    QPointer<tav::TransferDialog> transfers; ///< null when the window note shows the progress
    int downloaded = 0;
    QVector<Missed> missed;
};
