// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Far ends that a second softphone cannot play: they follow the scenarios beside this file.

#include "printers.h"
#include "softphonetest.h"
#include "waitfor.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QUdpSocket>

namespace {

class SippTest : public SoftphoneTest
{
protected:
    void TearDown() override
    {
        if (HasFailure())
            std::cerr << sipp.lines().join('\n').toStdString() << sipp.errorOutput().toStdString();
        SoftphoneTest::TearDown();
    }

    bool startSipp(const QString &scenario, const QStringList &options)
    {
        const auto port = [&](int number) { return QString::number(ports.port(number)); };
        return sipp.start(SIPP,
            QStringList{"-sf", SCENARIOS "/" + scenario, "-i", "127.0.0.1", "-p", sipPort(), "-mp", port(92), "-cp",
                port(95), "-nostdin"}
                + options);
    }

    QString sipPort() const { return QString::number(ports.port(90)); }

    // The scenarios wait for an INFO: whoever sends it decides when they go on.
    void nudge(const QString &callId) const
    {
        const QString message
            = QStringLiteral("INFO sip:127.0.0.1:%1 SIP/2.0\r\nVia: SIP/2.0/UDP 127.0.0.1:9;branch=z9hG4bK-nudge\r\n"
                             "From: <sip:nudge@127.0.0.1>;tag=1\r\nTo: <sip:sipp@127.0.0.1>;tag=2\r\nCall-ID: %2\r\n"
                             "CSeq: 1 INFO\r\nContent-Length: 0\r\n\r\n")
                  .arg(sipPort(), callId);
        QUdpSocket().writeDatagram(message.toUtf8(), QHostAddress(QHostAddress::LocalHost), sipPort().toUShort());
    }

    Program sipp;
};

} // namespace

TEST_F(SippTest, ACallerWhoCancelsIsGoneFromTheHost)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(startSipp("cancelled.xml", {"-m", "1", "-s", "ann", "-cid_str", "cancelled-%u", ann.address().mid(8)}));
    ASSERT_TRUE(host.waitForStatus("incoming"));
    EXPECT_EQ(host.call().value("LineId"), "Impatient Caller");
    nudge("cancelled-1");
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_EQ(sipp.waitForExit(), 0);
}

TEST_F(SippTest, ACalleeWhoIsBusyIsGoneFromTheHost)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(startSipp("busy.xml", {"-m", "1"}));
    const QString callee = "sip:busy@127.0.0.1:" + sipPort();
    ann.type("dial " + callee);
    ASSERT_TRUE(host.waitForTable({callee + "=dialing"}));
    QString details;
    ASSERT_TRUE(waitFor([&] {
        details = ann.typeAndRead("callstat", "direction: Outgoing");
        return details.contains("(RINGING)");
    }));
    nudge(QRegularExpression("id=(\\S+)").match(details).captured(1));
    EXPECT_TRUE(host.waitForTable({}));
    EXPECT_EQ(sipp.waitForExit(), 0);
}

TEST_F(SippTest, ABurstOfTenCallsShowsAndEachOneIsRejectedByItself)
{
    ASSERT_TRUE(startBridge());
    ASSERT_TRUE(startSipp("burst.xml", {"-m", "10", "-r", "1000", "-s", "ann", ann.address().mid(8)}));
    ASSERT_TRUE(waitFor([&] { return host.table().filter("=incoming").size() == 10; }));
    for (int caller = 1; caller <= 10; ++caller) {
        const QString address = QStringLiteral("sip:caller%1@127.0.0.1:%2").arg(caller).arg(sipPort());
        EXPECT_EQ(hostCall(address).value("LineId"), QStringLiteral("Caller %1").arg(caller));
        EXPECT_EQ(command(address, "Hangup"), "");
        EXPECT_TRUE(waitFor([&] { return host.table().size() == 10 - caller; }));
        EXPECT_TRUE(hostCall(address).isEmpty());
    }
    EXPECT_EQ(sipp.waitForExit(), 0);
}
