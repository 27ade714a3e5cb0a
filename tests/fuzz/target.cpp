// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "target.h"

#include "bytereader.h"
#include "finding.h"
#include "pluginstage.h"
#include "sequence.h"
#include "testbed.h"

#include <QtCore/QLoggingCategory>

namespace {

void swallow(QtMsgType, const QMessageLogContext &, const QString &) { }

void keepQuiet()
{
    // Texts are made as usual, and go nowhere.
    qInstallMessageHandler(swallow);
    QLoggingCategory::setFilterRules(QStringLiteral("voicecall=true\ndefault=true"));
}

/** Opens and subscribes to what is there once, for good. */
bool warmUp(TestBed &bed)
{
    keepQuiet();
    PluginStage(bed).finish();
    return true;
}

TestBed &testBed()
{
    static TestBed bed;
    static const bool isWarm = warmUp(bed);
    Q_UNUSED(isWarm)
    return bed;
}

void play(void (Sequence::*kind)(), const std::uint8_t *data, std::size_t size)
{
    TestBed &bed = testBed();
    const auto rules = bed.bus().matchRules();
    {
        ByteReader bytes(data, size);
        PluginStage stage(bed);
        (Sequence(bytes, stage).*kind)();
        stage.finish();
    }
    require(bed.bus().matchRules() == rules, "match rules are left behind, or too many were removed");
}

} // namespace

void playCalls(const std::uint8_t *data, std::size_t size) { play(&Sequence::playCalls, data, size); }

void playValues(const std::uint8_t *data, std::size_t size) { play(&Sequence::playValues, data, size); }

Player playerNamed(const std::string &name)
{
    if (name == "calls")
        return playCalls;
    return name == "values" ? playValues : nullptr;
}

void traceMessages()
{
    testBed().bus().trace();
    qInstallMessageHandler(nullptr);
}
