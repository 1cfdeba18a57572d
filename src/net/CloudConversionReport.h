// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What the conversion service says about a conversion. All of it is empty where the service says nothing.
/// The texts are the service's, in English, and may hold names from the drawing: show them as plain text.
struct CloudConversionReport
{
    /// Why the drawing was refused, in one line.
    QString refusal;
    /// What became of the drawing, in one line.
    QString summary;
    /// What the result lacks: "2 DIMENSION", an entry for each kind.
    QStringList leftOut;
    /// The whole report, a JSON object: what came and went, by kind, layer and colour, what was drawn from
    /// what, what was left out and why, the tolerance, and how the result was proven.
    QByteArray json;
};
