// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "programs/printabletext.h"

#include <QtCore/QVector>
#include <clocale>
#include <gmock/gmock.h>

using testing::HasSubstr;

static std::string text(const QString &string) { return string.toStdString(); }

static QString repeated(uint character, int count)
{
    const QString units = QChar::requiresSurrogates(character)
        ? QString(QChar(QChar::highSurrogate(character))) + QChar(QChar::lowSurrogate(character))
        : QString(QChar(character));
    return units.repeated(count);
}

static const QString replacement = QChar(QChar::ReplacementCharacter);

class PrintableTextTest : public testing::Test
{
protected:
    static void SetUpTestSuite() { std::setlocale(LC_CTYPE, "C.UTF-8"); }
};

TEST_F(PrintableTextTest, OrdinaryTextStaysAsItIs)
{
    const QString names[] = {QStringLiteral("Anna B. <sip:a@b>"), QStringLiteral("J\u00f6rg \u5f20\u4f1f"),
        QStringLiteral("Zoe\u0308"), QStringLiteral("\u0928\u092e\u0938\u094d\u0924\u0947"),
        QStringLiteral("\u05e9\u05dc\u05d5\u05dd"), QStringLiteral("\U0001F469\u200D\U0001F680")};
    for (const QString &name : names) {
        EXPECT_EQ(text(PrintableText::printable(name)), text(name));
        EXPECT_EQ(text(PrintableText::escaped(name)), text(name));
    }
}

// Controls of both kinds, line ends of every kind, marks that turn the direction, and what shows nothing.
TEST_F(PrintableTextTest, WhatActsOnATerminalIsReplaced)
{
    const QVector<uint> acting = {0x00, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x1B, 0x7F, 0x85, 0x9B, 0x9D, 0xAD,
        0x061C, 0x200B, 0x200E, 0x200F, 0x2028, 0x2029, 0x202A, 0x202B, 0x202C, 0x202D, 0x202E, 0x2060, 0x2066, 0x2067,
        0x2068, 0x2069, 0xFEFF, 0xFFF9, 0xE000, 0xE0041};
    for (uint character : acting) {
        const QString name = QStringLiteral("a") + repeated(character, 1) + QLatin1Char('b');
        EXPECT_EQ(text(PrintableText::printable(name)), text(QStringLiteral("a\ufffdb"))) << std::hex << character;
        EXPECT_EQ(PrintableText::escaped(name).startsWith(QLatin1String("a\\u")), character != 0x0A)
            << std::hex << character;
    }
}

TEST_F(PrintableTextTest, EachOfManyUnprintableCharactersIsReplaced)
{
    EXPECT_EQ(text(PrintableText::printable(repeated(0x202E, 30))), text(replacement.repeated(30)));
}

TEST_F(PrintableTextTest, ALetterHasNoMoreMarksThanScriptsNeed)
{
    // Combining, enclosing, joining, a variant selector, a vowel of a syllable.
    for (uint mark : {0x0301u, 0x20DDu, 0x200Du, 0xFE0Fu, 0x1160u}) {
        const QString eight = QLatin1Char('a') + repeated(mark, 8) + QLatin1Char('b');
        EXPECT_EQ(text(PrintableText::printable(eight)), text(eight)) << std::hex << mark;
        const QString many = QLatin1Char('a') + repeated(mark, 200000) + QLatin1Char('b');
        EXPECT_EQ(text(PrintableText::printable(many)),
            text(QLatin1Char('a') + repeated(mark, 8) + replacement + QLatin1Char('b')))
            << std::hex << mark;
        const QString escaped = PrintableText::escaped(many);
        EXPECT_EQ(escaped.count(repeated(mark, 1)), 8) << std::hex << mark;
        EXPECT_EQ(escaped.count(QLatin1String("\\u")), 200000 - 8) << std::hex << mark;
    }
}

TEST_F(PrintableTextTest, CutTextIsAsShortAsItIsNarrow)
{
    const QString many = QLatin1Char('a') + repeated(0x0301, 200000) + QStringLiteral("bcdefgh");
    const QString cut = PrintableText::elided(PrintableText::printable(many), 5);
    EXPECT_EQ(PrintableText::width(cut), 5);
    EXPECT_LE(cut.size(), 5 + 8);
}

TEST_F(PrintableTextTest, WhatStandsBehindRightToLeftLettersKeepsItsPlace)
{
    const QString padded = PrintableText::padded(QStringLiteral("\u05d0\u05d1"), 4);
    EXPECT_EQ(text(padded), text(QStringLiteral("\u05d0\u05d1\u200e  ")));
    EXPECT_EQ(PrintableText::width(padded), 4);
    EXPECT_EQ(text(PrintableText::padded(QStringLiteral("ab"), 4)), "ab  ");
}

TEST_F(PrintableTextTest, MarksTakeNoColumnInAnyLocale)
{
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(PrintableText::width(QStringLiteral("e\u0301\u200d")), 1);
    std::setlocale(LC_CTYPE, "C.UTF-8");
    EXPECT_EQ(PrintableText::width(QStringLiteral("e\u0301\u5f20")), 3);
}
