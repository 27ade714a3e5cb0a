// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "printabletext.h"

#include <QtCore/QVector>
#include <algorithm>
#include <cwchar>

// Marks that one letter can have. Scripts that stack them need fewer; what is beyond covers the lines around.
static const int mostMarks = 8;

static const QChar leftToRightMark(0x200E);

// Joiners decide how letters of some scripts connect; names need them and terminals do not act on them.
static bool isJoiner(uint character) { return character == 0x200C || character == 0x200D; }

static bool isAscii(uint character) { return character >= 0x20 && character < 0x7F; }

static bool isAscii(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar unit) { return isAscii(unit.unicode()); });
}

// Vowels and final consonants that are written into the syllable of the consonant before.
static bool isInnerJamo(uint character)
{
    return (character >= 0x1160 && character <= 0x11FF) || (character >= 0xD7B0 && character <= 0xD7FF);
}

// Not by the locale alone: not every program sets one.
static bool isMark(uint character)
{
    if (isAscii(character))
        return false;
    const QChar::Category category = QChar::category(character);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing || category == QChar::Other_Format
        || isInnerJamo(character) || wcwidth(wchar_t(character)) == 0;
}

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

// QString::fromUcs4() takes a byte order mark for one, and leaves it out.
static QString fromCharacter(uint character)
{
    if (QChar::requiresSurrogates(character))
        return QString(QChar(QChar::highSurrogate(character))) + QChar(QChar::lowSurrogate(character));
    return QChar(ushort(character));
}

// Calls `keep` for what may be shown, and `refuse` for what may not, or is one mark too many.
template <typename Keep, typename Refuse>
static void sift(const QString &text, Keep keep, Refuse refuse)
{
    int marks = 0;
    const QVector<uint> characters = text.toUcs4();
    for (uint character : characters) {
        const bool isPrintable = PrintableText::isPrintable(character);
        marks = isPrintable && isMark(character) ? marks + 1 : 0;
        if (isPrintable && marks <= mostMarks)
            keep(character);
        else
            refuse(character, marks - mostMarks);
    }
}

QString PrintableText::printable(const QString &text)
{
    if (isAscii(text))
        return text;
    QString result;
    sift(
        text, [&](uint character) { result += fromCharacter(character); },
        [&](uint, int excess) {
            // One for all marks that are too many: each takes a column, which the marks did not.
            if (excess <= 1)
                result += QChar(QChar::ReplacementCharacter);
        });
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
    if (isAscii(text))
        return text;
    QString result;
    sift(
        text, [&](uint character) { result += fromCharacter(character); },
        [&](uint character, int) { result += character == '\n' ? QStringLiteral("\n") : escapedCharacter(character); });
    return result;
}

// The locale was set for this; characters it does not know take one column on most terminals.
static int characterWidth(uint character)
{
    if (isAscii(character))
        return 1;
    return isMark(character) ? 0 : qMax(1, wcwidth(wchar_t(character)));
}

int PrintableText::width(const QString &text)
{
    if (isAscii(text))
        return text.size();
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

static bool isRightToLeft(QChar unit)
{
    const QChar::Direction direction = unit.direction();
    return direction == QChar::DirR || direction == QChar::DirAL;
}

QString PrintableText::padded(const QString &text, int columns)
{
    const QString filling(qMax(0, columns - width(text)), QLatin1Char(' '));
    // Else a terminal that turns such letters would turn the next cell's digits with them.
    const bool turns = std::any_of(text.cbegin(), text.cend(), isRightToLeft);
    return turns ? text + leftToRightMark + filling : text + filling;
}
