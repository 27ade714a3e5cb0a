// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "words.h"

#include "programs/printabletext.h"

#include <QtCore/QHash>

static const QHash<QChar, QChar> escapes = {{QLatin1Char('n'), QLatin1Char('\n')},
    {QLatin1Char('r'), QLatin1Char('\r')}, {QLatin1Char('t'), QLatin1Char('\t')}};

static constexpr int hexDigits = 4;

// What stands behind a backslash at `*position`, which moves to its last character.
static QChar unescaped(const QString &line, int *position)
{
    const QChar c = line.at(*position);
    bool isNumber = false;
    const ushort unit = line.mid(*position + 1, hexDigits).toUShort(&isNumber, 16);
    if (c != QLatin1Char('u') || !isNumber || *position + hexDigits >= line.size())
        return escapes.value(c, c);
    *position += hexDigits;
    return QChar(unit);
}

bool splitWords(const QString &line, QStringList *words)
{
    QString word;
    bool inWord = false;
    bool inQuotes = false;
    for (int i = 0; i < line.size(); ++i) {
        QChar c = line.at(i);
        if (c == QLatin1Char('"')) {
            inQuotes = !inQuotes;
            inWord = true;
        } else if (c.isSpace() && !inQuotes) {
            if (inWord)
                words->append(word);
            word.clear();
            inWord = false;
        } else {
            if (inQuotes && c == QLatin1Char('\\') && i + 1 < line.size())
                c = unescaped(line, &++i);
            word += c;
            inWord = true;
        }
    }
    if (inWord)
        words->append(word);
    return !inQuotes;
}

static QString escaped(QChar c)
{
    if (c == QLatin1Char('"') || c == QLatin1Char('\\'))
        return QLatin1Char('\\') + QString(c);
    const QChar letter = escapes.key(c);
    return letter.isNull() ? QString(c) : QLatin1Char('\\') + QString(letter);
}

QString quoted(const QString &text)
{
    QString result;
    for (const QChar c : text)
        result += escaped(c);
    return QLatin1Char('"') + PrintableText::escaped(result) + QLatin1Char('"');
}

QString yesNo(bool yes) { return yes ? QStringLiteral("yes") : QStringLiteral("no"); }

QString readChoice(const QString &word, const QString &yes, const QString &no, bool *truth)
{
    *truth = word == yes;
    return word == yes || word == no ? QString() : QStringLiteral("\"%1\" is neither %2 nor %3").arg(word, yes, no);
}

QString readSeconds(const QString &word, int *milliseconds)
{
    bool isNumber = false;
    const double seconds = word.toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0 && seconds <= 86400))
        return QStringLiteral("\"%1\" is no number of seconds from 0 to 86400").arg(word);
    *milliseconds = int(seconds * 1000);
    return {};
}
