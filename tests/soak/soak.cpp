// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "soak.h"

#include "waitfor.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace {

constexpr int samples = 100;

constexpr double mebibyte = 1024 * 1024;
// A mebibyte after 100,000 calls.
constexpr double mostGrowthPerCall = mebibyte / 100000;
// What still grows to its size after the first calls, whatever their number.
constexpr double heapNoise = 64 * 1024;
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
    m_load.run(m_options.registrations / 2, m_options.calls / 2);
    const Inventory middle = settled(begin);
    m_load.run(m_options.registrations - m_options.registrations / 2, m_options.calls - m_options.calls / 2);
    const Inventory end = settled(begin);
    m_load.dismissResident();
    const Inventory aloneAgain = settled(alone);

    std::printf("\n%d registrations and %d calls in %.0f s; %d more applications left unanswered, one stayed\n",
        m_load.registrations(), m_load.calls(), double(m_clock.elapsed()) / 1000, m_load.hurried());
    // Each of them, whatever the others say.
    const bool good[] = {judgeCounts("with the one that stayed", begin, end),
        judgeCounts("before it came, and when it had left", alone, aloneAgain), judgeHeap(middle, end), judgeGrowth(),
        endHost()};
    return std::all_of(std::begin(good), std::end(good), [](bool one) { return one; });
}

void Soak::startHost()
{
    m_bus.useAsSessionBus();
    m_host.setStandardErrorFile(m_options.log.isEmpty() ? QProcess::nullDevice() : m_options.log);
    const QStringList environment = {QStringLiteral("SOAK_LEAK=") + m_options.leak,
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

bool Soak::judgeHeap(const Inventory &middle, const Inventory &end) const
{
    const int calls = m_options.calls - m_options.calls / 2;
    const double growth = double(end.heap - middle.heap);
    std::printf("heap at rest after the first half %lld bytes, at the end %lld, %.2f more for each call: ", middle.heap,
        end.heap, growth / calls);
    if (end.heap == 0) {
        std::printf("not known\n");
        return true;
    }
    const bool isGood = growth <= heapNoise + mostGrowthPerCall * calls;
    std::printf("%s\n", verdict(isGood));
    return isGood;
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
