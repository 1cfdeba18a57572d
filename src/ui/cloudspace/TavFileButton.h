// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class ITreeElement;

namespace tav {
class ElidedLabel;
} // namespace tav

/// The tile of one file or folder: its icon above its name. The first click selects, the next one opens. A
/// tile never deselects itself; its owner does.
class TavFileButton : public QWidget
{
    Q_OBJECT

public:
    /// \param elementName shown as it is
    /// \param elementType 0 for a folder, anything else for a file
    TavFileButton(QString elementName, int elementType, QWidget* parent);

    QString getName() const { return name; }
    /// Selects or deselects, and colours the tile accordingly.
    void setSelected(bool on);

    /// Distinguishes it from other tiles of its name: by \a number on its icon, and by \a which behind the
    /// name in its tooltip and its accessible name.
    void setNamesake(int number, const QString& which);
    /// The name, with what tells it from others of that name.
    QString getDescription() const;

    bool selected = false;
    /// The element that it stands for: set by its owner, and borrowed.
    ITreeElement* element = nullptr;

    /// All tiles have one size, whatever their names: a layout of thousands need not measure each.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    /// The width of a tile with the font of \a widget.
    static int widthIn(const QWidget* widget);

signals:
    void iclicked(QString name);
    void iselected(QString name);

protected:
    bool event(QEvent* event) override;

private slots:
    void _onClicked();

private:
    class IconButton;

    IconButton* icon;
    tav::ElidedLabel* label;
    QString name;
    QString whichOfName; ///< empty when it is the only one
    int type;
};
