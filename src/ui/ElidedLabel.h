// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

namespace tav {

/// Text that gives way: cut in the middle where there is no room for all of it, and whole in its tooltip
/// then. text() is always all of it. The text is shown as it is, never as rich text.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    /// \param maximumWidth what it asks for at most, in pixels
    /// \param maximumLines how many it always has room for
    ElidedLabel(const QString& text, int maximumWidth, int maximumLines = 1);

    bool isCut() const { return fitting().join(QString()) != text(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool event(QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    /// The colours to paint with.
    virtual QPalette colours() const { return palette(); }

private:
    QStringList fitting() const;

    int maximum;
    int maximumLines;
};

/// \a text in lines of \a width pixels, broken between words where that is possible. What is too much for
/// \a maximumLines is cut out in the middle.
QStringList fittingLines(const QString& text, const QFont& font, int width, int maximumLines);

/// \a text as a tooltip, which would else take a name with a tag in it for rich text.
QString plainToolTip(const QString& text);

} // namespace tav
