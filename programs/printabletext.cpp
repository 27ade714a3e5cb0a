// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "printabletext.h"

#include <QtCore/QVector>
#include <cwchar>

// Joiners decide how letters of some scripts connect; names need them and terminals do not act on them.
static bool isJoiner(uint character) { return character == 0x200C || character == 0x200D; }

bool PrintableText::isPrintable(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
        return isJoiner(character);
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

static QString fromCharacter(uint character) { return QString::fromUcs4(&character, 1); }

QString PrintableText::printable(const QString &text)
{
    QString result;
    const QVector<uint> characters = text.toUcs4();
    for (uint character : characters)
        result += isPrintable(character) ? fromCharacter(character) : QString(QChar(QChar::ReplacementCharacter));
    return result;
}

static QString escapedCharacter(uint character)
{
    QString result;
    const QString units = fromCharacter(character);
    for (QChar unit : units)
        result += QStringLiteral("\\u%1").arg(unit.unicode(), 4, 16, QLatin1Char('0'));
    return result;
}

QString PrintableText::escaped(const QString &text)
{
    QString result;
    const QVector<uint> characters = text.toUcs4();
    for (uint character : characters)
        result += character == '\n' || isPrintable(character) ? fromCharacter(character) : escapedCharacter(character);
    return result;
}

// The locale was set for this; characters it does not know take one column on most terminals.
static int characterWidth(uint character)
{
    const int columns = wcwidth(wchar_t(character));
    return columns < 0 ? 1 : columns;
}

int PrintableText::width(const QString &text)
{
    int columns = 0;
    const QVector<uint> characters = text.toUcs4();
    for (uint character : characters)
        columns += characterWidth(character);
    return columns;
}

QString PrintableText::elided(const QString &text, int columns)
{
    if (width(text) <= columns)
        return text;
    QString result;
    int used = 1;
    const QVector<uint> characters = text.toUcs4();
    for (uint character : characters) {
        used += characterWidth(character);
        if (used > columns)
            break;
        result += fromCharacter(character);
    }
    return columns > 0 ? result + QChar(0x2026) : QString();
}

QString PrintableText::padded(const QString &text, int columns)
{
    return text + QString(qMax(0, columns - width(text)), QLatin1Char(' '));
}
