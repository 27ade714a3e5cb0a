// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "faultcell.h"

#include "busmain.h"
#include "patience.h"
#include "printers.h"
#include "processfacts.h"
#include "programs.h"
#include "textoutput.h"

#include <algorithm>
#include <csignal>
#include <cstdio>

// How long the host may take to answer when all is over.
static constexpr int calmAnswerMs = 2000;

void FaultCell::SetUp()
{
    // The plug-in's lines for people: read by nobody here, they would block the host when the pipe is full.
    qputenv("QT_LOGGING_RULES", "default.info=false\ndefault.debug=false");
    ASSERT_TRUE(host.start(optionsOnBus() + hostOptions)) << host.program().errorOutput();
    ASSERT_NO_FATAL_FAILURE(honest.bringUp());
    ASSERT_NO_FATAL_FAILURE(honest.makeCall());
    ASSERT_NO_FATAL_FAILURE(honest.exchange());
    honest.commandTimes.clear();
    honest.statusTimes.clear();
    m_memoryBefore = ProcessFacts::residentMemory(host.program().processId());
    m_descriptorsBefore = ProcessFacts::openDescriptors(host.program().processId());
    ASSERT_NO_FATAL_FAILURE(startFaulty());
    m_isReady = true;
}

void FaultCell::TearDown()
{
    if (!m_isReady || !m_expectsHost)
        return;
    ASSERT_TRUE(host.program().isRunning()) << "the host is gone: " << host.program().errorOutput();
    if (!m_departure.isValid())
        killFaulty();
    ASSERT_NO_FATAL_FAILURE(waitForDeparture());
    ASSERT_NO_FATAL_FAILURE(honest.makeCall());
    ASSERT_NO_FATAL_FAILURE(honest.exchange());
    ASSERT_NO_FATAL_FAILURE(judgeResources());
    EXPECT_LT(honest.roundTrip(), calmAnswerMs);
    ASSERT_NO_FATAL_FAILURE(honest.hangUp());
    EXPECT_EQ(host.stop(), 0) << host.program().errorOutput();
    report();
}

void FaultCell::judgeResources()
{
    const qint64 pid = host.program().processId();
    EXPECT_TRUE(holdsWithin(m_patience,
        [&] {
            m_descriptorsAfter = ProcessFacts::openDescriptors(pid);
            return m_descriptorsAfter == m_descriptorsBefore;
        }))
        << m_descriptorsAfter << " descriptors are open, " << m_descriptorsBefore << " were";
    const auto isBack = [&] {
        m_memoryAfter = ProcessFacts::residentMemory(pid);
        return isSanitized || m_memoryAfter <= m_memoryBefore + memoryBound;
    };
    EXPECT_TRUE(holdsWithin(m_patience, isBack))
        << m_memoryAfter << " KiB are in use, " << m_memoryBefore << " were; allowed are " << memoryBound << " more";
}

void FaultCell::report() const
{
    qint64 worst = m_worstUs;
    for (const QVector<qint64> &times : {honest.commandTimes, honest.statusTimes}) {
        for (const qint64 time : times)
            worst = std::max(worst, time);
    }
    std::printf("fault-cell: gone=%d latency=%.1f memory=%d:%d:%d descriptors=%d:%d\n", m_departureMs,
        double(worst) / 1000, m_memoryBefore, m_memoryAfter, memoryBound, m_descriptorsBefore, m_descriptorsAfter);
}

void FaultCell::note(const QString &text) const
{
    std::printf("fault-note: %s\n", qUtf8Printable(text));
    std::fflush(stdout);
}

static QString summary(QVector<qint64> times)
{
    std::sort(times.begin(), times.end());
    if (times.isEmpty())
        return QStringLiteral("none");
    return QStringLiteral("p50 %1 ms, max %2 ms of %3")
        .arg(double(times.at(times.size() / 2)) / 1000, 0, 'f', 1)
        .arg(double(times.constLast()) / 1000, 0, 'f', 1)
        .arg(times.size());
}

void FaultCell::noteLatencies(const QString &during)
{
    note(QStringLiteral("%1: command %2; status %3")
             .arg(during, summary(honest.commandTimes), summary(honest.statusTimes)));
    for (QVector<qint64> *times : {&honest.commandTimes, &honest.statusTimes}) {
        for (const qint64 time : qAsConst(*times))
            m_worstUs = std::max(m_worstUs, time);
        times->clear();
    }
}

// --- The faulty application

void FaultCell::startFaulty()
{
    ASSERT_TRUE(faulty.start(Programs::faultyApplication(), {}));
    ASSERT_TRUE(faulty.waitForOutput(QStringLiteral("connected"))) << faulty.errorOutput();
}

void FaultCell::tellAndAwait(const QString &command, const QString &line)
{
    const int before = faulty.lines().size();
    faulty.type(command);
    ASSERT_TRUE(holdsWithin(m_patience, [&] { return faulty.lines().mid(before).contains(line); }))
        << "no '" << line << "' on '" << command << "': " << faulty.lines().mid(before).join(QLatin1Char('\n'))
        << faulty.errorOutput();
}

void FaultCell::tell(const QString &command)
{
    tellAndAwait(command, QStringLiteral("done ") + command.section(QLatin1Char(' '), 0, 0));
}

void FaultCell::tellLast(const QString &command)
{
    faulty.type(command);
    ASSERT_TRUE(
        holdsWithin(m_patience, [&] { return !faulty.isRunning() || ProcessFacts::isStopped(faulty.processId()); }));
}

void FaultCell::bringUpFaulty(uint status, const QString &shown)
{
    ASSERT_NO_FATAL_FAILURE(tellAndAwait(QStringLiteral("register /bad"), QStringLiteral("registered /bad")));
    ASSERT_NO_FATAL_FAILURE(tell(QStringLiteral("announce /bad/1 %1").arg(status)));
    ASSERT_NO_FATAL_FAILURE(waitForFaultyStatus(shown));
}

static QVariantMap find(const QMap<QString, QVariantMap> &calls, const QString &path)
{
    for (const QVariantMap &call : calls) {
        if (call.value(QStringLiteral("Uri")) == QVariant("faulty:" + path))
            return call;
    }
    return QVariantMap();
}

QString FaultCell::faultyStatus(const QString &path) const
{
    return find(host.calls(), path).value(QStringLiteral("StatusText")).toString();
}

void FaultCell::waitForFaultyStatus(const QString &shown, const QString &path)
{
    QString status;
    ASSERT_TRUE(holdsWithin(m_patience,
        [&] {
            status = faultyStatus(path);
            return status == shown;
        }))
        << path << " is shown as '" << status << "', not '" << shown << "'";
}

void FaultCell::commandFaulty(const QString &method, const QVariantList &arguments)
{
    EXPECT_EQ(host.commandTo(QStringLiteral("faulty:/bad/1"), method, arguments), QString());
}

void FaultCell::beginDeparture()
{
    m_departureMs = -1;
    m_departure.start();
}

void FaultCell::killFaulty()
{
    beginDeparture();
    faulty.signal(SIGKILL);
}

bool FaultCell::onlyTheHonestIsLeft() const
{
    return host.providers() == QStringList(QStringLiteral("ringlet ") + honest.providerId())
        && host.calls().size() == 1;
}

void FaultCell::waitForDeparture()
{
    if (m_departureMs >= 0)
        return;
    ASSERT_TRUE(holdsWithin(m_patience, [&] { return onlyTheHonestIsLeft(); }))
        << "still there: " << host.providers().mid(0, 5).join(QStringLiteral(", ")) << "; "
        << host.table().mid(0, 5).join(QStringLiteral(", ")) << "; the host says: " << host.program().errorOutput();
    m_departureMs = int(m_departure.elapsed());
}
