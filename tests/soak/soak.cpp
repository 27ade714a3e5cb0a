// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "soak.h"

#include "waitfor.h"

#include <QtCore/QDate>
#include <QtCore/QFile>
#include <QtDBus/QDBusMessage>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <functional>
#include <stdexcept>

namespace {

constexpr int samples = 100;

constexpr double mebibyte = 1024 * 1024;
// A mebibyte after 100,000 calls.
constexpr double mostGrowthPerCall = mebibyte / 100000;
// The heap at rest, from before the first call to behind the last one. Tables that grow to their size and do not
// shrink take some 50 to 85 KiB, whatever the number of calls.
constexpr double mostHeapAtOnce = 112 * 1024;
constexpr double mostHeapPerCall = 1;
// Below this a few pages more or less are all that could be seen.
constexpr int callsToJudgeGrowth = 50000;

const char *verdict(bool isGood) { return isGood ? "good" : "FAILED"; }

} // namespace

Soak::Soak(const Options &options)
    : m_options(options),
      m_connection(m_bus.connect(QStringLiteral("soak"))),
      m_load(m_bus.address().toStdString(), options.seed)
{
    m_load.check = [this] { checkHost(); };
    const int interval = std::max(1, m_options.calls / samples);
    m_load.onCallEnded = [this, interval] {
        loseAtCall();
        if (m_load.calls() % interval == 0)
            sample();
    };
}

bool Soak::run()
{
    startHost();
    const Inventory alone = take();
    m_load.welcomeResident();
    const Inventory begin = atRest();
    m_clock.start();
    m_load.run(m_options.registrations, m_options.calls);
    const Inventory end = settled(begin);
    m_load.dismissResident();
    const Inventory aloneAgain = settled(alone);

    std::printf("\n%d registrations and %d calls in %.0f s; %d more applications left unanswered, one stayed\n",
        m_load.registrations(), m_load.calls(), double(m_clock.elapsed()) / 1000, m_load.hurried());
    // Each of them, whatever the others say.
    const bool good[] = {judgeCounts("with the one that stayed", begin, end),
        judgeCounts("before it came, and when it had left", alone, aloneAgain), judgeHeap(begin, end), judgeGrowth(),
        endHost()};
    writeReport({alone, begin, end, aloneAgain});
    return std::all_of(std::begin(good), std::end(good), [](bool one) { return one; });
}

void Soak::startHost()
{
    m_bus.useAsSessionBus();
    m_host.setStandardErrorFile(m_options.log.isEmpty() ? QProcess::nullDevice() : m_options.log);
    // Without the allocator's cache of each thread: what lies there counts as in use, some 400 KiB once it is full.
    const QStringList environment
        = {QStringLiteral("GLIBC_TUNABLES=glibc.malloc.tcache_count=0"), QStringLiteral("SOAK_LEAK=") + m_options.leak,
            QStringLiteral("SOAK_SILENT_PEER=") + QString::fromStdString(m_load.silentPeer())};
    const bool started = m_host.start(QStringLiteral(VOICECALLD),
        {QStringLiteral("--plugin"), QStringLiteral(SOAK_PROBE), QStringLiteral("--plugin"), m_options.plugin},
        environment);
    if (!started || !m_host.waitForOutput(QStringLiteral("voicecalld: ready")))
        throw std::runtime_error("the host did not come up; --log FILE may tell why");
}

void Soak::checkHost()
{
    QCoreApplication::processEvents();
    if (!m_host.isRunning())
        throw std::runtime_error("the host has ended; --log FILE may tell why");
}

Inventory Soak::take() const { return Inventory::take(m_connection, m_host.processId()); }

void Soak::sample()
{
    const Inventory now = take();
    if (m_load.calls() > m_options.calls / 2)
        m_growth.add(m_load.calls(), double(now.resident));
    std::printf("%7d calls  %7d registrations  RSS %6.2f MiB  heap %6.2f MiB  %5.0f s\n", m_load.calls(),
        m_load.registrations(), double(now.resident) / mebibyte, double(now.heap) / mebibyte,
        double(m_clock.elapsed()) / 1000);
    std::fflush(stdout);
}

void Soak::loseAtCall()
{
    if (!m_options.leak.isEmpty())
        m_connection.send(QDBusMessage::createMethodCall(QString::fromStdString(HostClient::name),
            QStringLiteral("/org/ringlet/soakprobe"), QStringLiteral("org.ringlet.SoakProbe"),
            QStringLiteral("EndCall")));
}

// Two looks in a row that show the same.
Inventory Soak::atRest() const
{
    Inventory now = take();
    const auto isUnchanged = [&] {
        const Inventory before = now;
        now = take();
        return now == before;
    };
    if (!QTest::qWaitFor(isUnchanged, m_options.patience * 1000))
        std::printf("the host does not come to rest in %d s\n", m_options.patience);
    return now;
}

Inventory Soak::settled(const Inventory &begin) const
{
    Inventory now;
    const auto isSettled = [&] {
        now = take();
        return now == begin;
    };
    if (!QTest::qWaitFor(isSettled, m_options.patience * 1000))
        std::printf("what is left does not go away in %d s\n", m_options.patience);
    return now;
}

bool Soak::judgeCounts(const char *when, const Inventory &begin, const Inventory &end) const
{
    const bool isGood = begin == end;
    std::printf("\n%s\n%sends as it began: %s\n", when, qUtf8Printable(end.comparedWith(begin)), verdict(isGood));
    return isGood;
}

bool Soak::judgeHeap(const Inventory &begin, const Inventory &end) const
{
    const double growth = double(end.heap - begin.heap);
    const double allowed = mostHeapAtOnce + mostHeapPerCall * m_options.calls;
    std::printf("heap at rest before the first call %lld bytes, behind the last %lld, %.2f more for each call, at most "
                "%.2f allowed: ",
        begin.heap, end.heap, growth / m_options.calls, allowed / m_options.calls);
    if (end.heap == 0) {
        std::printf("not known\n");
        return true;
    }
    std::printf("%s\n", verdict(growth <= allowed));
    return growth <= allowed;
}

bool Soak::judgeGrowth() const
{
    const double slope = m_growth.slope();
    std::printf("RSS grows in the second half by %.3f MiB per 100,000 calls: ", slope * 100000 / mebibyte);
    if (m_options.calls < callsToJudgeGrowth) {
        std::printf("not judged in so short a run\n");
        return true;
    }
    const bool isGood = slope <= mostGrowthPerCall;
    std::printf("%s\n", verdict(isGood));
    return isGood;
}

bool Soak::endHost()
{
    m_host.signal(SIGTERM);
    const int code = m_host.waitForExit();
    std::printf("host ends with exit code %d: %s\n", code, verdict(code == 0));
    return code == 0;
}

void Soak::writeReport(const QVector<Inventory> &looks) const
{
    if (m_options.report.isEmpty())
        return;
    QString text
        = QStringLiteral("| | begin | with the resident | at its last call's end | end |\n|---|---|---|---|---|\n");
    const auto addLine = [&](const QString &name, const std::function<qint64(const Inventory &)> &value) {
        text += QStringLiteral("| ") + name;
        for (const Inventory &look : looks)
            text += QStringLiteral(" | %L1").arg(value(look));
        text += QStringLiteral(" |\n");
    };
    for (int i = 0; i < looks.constFirst().counts.size(); ++i)
        addLine(QString::fromLatin1(looks.constFirst().counts.at(i).name),
            [=](const Inventory &look) { return look.counts.at(i).value; });
    addLine(QStringLiteral("heap, bytes"), [](const Inventory &look) { return look.heap; });
    addLine(QStringLiteral("resident memory, KiB"), [](const Inventory &look) { return look.resident / 1024; });
    text
        += QStringLiteral("\n%L1 registrations and %L2 calls in %L3 s, and %L4 more applications that left unanswered, "
                          "on %5. Resident memory grew\nin the second half by %6 MiB per 100,000 calls.\n")
               .arg(m_load.registrations())
               .arg(m_load.calls())
               .arg(m_clock.elapsed() / 1000)
               .arg(m_load.hurried())
               .arg(QDate::currentDate().toString(Qt::ISODate))
               .arg(m_growth.slope() * 100000 / mebibyte, 0, 'f', 3);
    QFile file(m_options.report);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        throw std::runtime_error("cannot write " + m_options.report.toStdString());
}
