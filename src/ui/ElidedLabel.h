// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

/// One line of text that gives way: cut in the middle where there is no room for all of it, and whole in its
/// tooltip then. text() is always all of it. The text is shown as it is, never as rich text.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    /// \param maximumWidth what it asks for at most, in pixels
    ElidedLabel(const QString& text, int maximumWidth);

    bool isCut() const { return fitting() != text(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool event(QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    /// The colours to paint with.
    virtual QPalette colours() const { return palette(); }

private:
    QString fitting() const;

    int maximum;
};

/// \a text as a tooltip, which would else take a name with a tag in it for rich text.
QString plainToolTip(const QString& text);
