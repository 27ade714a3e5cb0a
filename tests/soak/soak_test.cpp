// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "printers.h"
#include "program.h"

#include <gtest/gtest.h>

namespace {

constexpr int patience = 10; // how often a program is waited for

struct Result
{
    int exitCode = -1;
    QStringList lines;
    QString errors;

    QString line(const QString &with) const { return lines.filter(with).value(0); }
};

Result soak(const QStringList &arguments)
{
    Program program;
    Result result;
    if (!program.start(QStringLiteral(SOAK), arguments))
        return result;
    for (int i = 0; i < patience && program.isRunning(); ++i)
        result.exitCode = program.waitForExit();
    result.lines = program.lines();
    result.errors = program.errorOutput();
    return result;
}

Result leaky(const QString &kind)
{
    return soak({QStringLiteral("--registrations"), QStringLiteral("4"), QStringLiteral("--calls"), QStringLiteral("4"),
        QStringLiteral("--patience"), QStringLiteral("1"), QStringLiteral("--leak"), kind});
}

// The word is at the end of the count's first line.
bool differs(const Result &result, const char *count)
{
    return result.line(QLatin1String(count)).endsWith(QLatin1String("differs"));
}

} // namespace

TEST(Soak, HostEndsAsItBeganAfterAShortRun)
{
    const Result result = soak({QStringLiteral("--short")});
    EXPECT_EQ(result.exitCode, 0) << qPrintable(result.lines.join(QLatin1Char('\n')) + result.errors);
    EXPECT_TRUE(result.line(QStringLiteral("300 registrations and 2000 calls in")).size() > 0);
}

TEST(Soak, NoticesADescriptorThatIsLeftOpen)
{
    const Result result = leaky(QStringLiteral("descriptor"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(differs(result, "file descriptors"));
}

TEST(Soak, NoticesAnObjectThatIsNeverDeleted)
{
    const Result result = leaky(QStringLiteral("object"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(differs(result, "objects (QObject)"));
}

TEST(Soak, NoticesACallThatIsNeverAnswered)
{
    const Result result = leaky(QStringLiteral("pending-call"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(differs(result, "pending calls"));
}

TEST(Soak, NoticesAMatchRuleThatStays)
{
    const Result result = leaky(QStringLiteral("rule"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(differs(result, "match rules at the daemon"));
    EXPECT_TRUE(differs(result, "subscriptions in Qt's bus layer"));
}

TEST(Soak, NoticesAThreadThatStays)
{
    const Result result = leaky(QStringLiteral("thread"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(differs(result, "threads"));
}

#ifdef HEAP_IS_COUNTED
TEST(Soak, NoticesMemoryThatIsKept)
{
    const Result result = leaky(QStringLiteral("memory"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.line(QStringLiteral("heap at rest")).endsWith(QLatin1String("FAILED")));
}

TEST(Soak, NoticesElevenBytesThatAreKeptOfEachCall)
{
    const Result result = soak({QStringLiteral("--registrations"), QStringLiteral("16"), QStringLiteral("--calls"),
        QStringLiteral("10000"), QStringLiteral("--leak"), QStringLiteral("call-memory")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.line(QStringLiteral("heap at rest")).endsWith(QLatin1String("FAILED")));
}
#endif

TEST(Soak, SaysWhatIsWrongWithItsCommandLine)
{
    const Result words = soak({QStringLiteral("--calls"), QStringLiteral("many")});
    EXPECT_EQ(words.exitCode, 2);
    EXPECT_EQ(words.errors, QStringLiteral("soak: --calls is 'many'; it has to be a number, at least 4; see --help\n"));
    const Result unknown = soak({QStringLiteral("--forever")});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_EQ(unknown.errors, QStringLiteral("soak: Unknown option 'forever'; see --help\n"));
}
