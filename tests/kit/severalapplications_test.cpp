// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Many calls, and several applications in one simulator.

#include "kittest.h"
#include "waitfor.h"

#include <QtDBus/QDBusConnectionInterface>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class SeveralApplications : public KitTest
{
protected:
    void SetUp() override { startSimulator(); }

    void startPhone()
    {
        expectDone("application phone");
        ASSERT_TRUE(waitForLine("application phone registered /ringlet/phone"));
        phone = linesThatStart("application phone connected ").constLast().section(' ', -1);
    }

    bool isOnBus(const QString &name)
    {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(name).value();
    }

    QString phone;
};

TEST_F(SeveralApplications, ManyMakesNumberedCalls)
{
    expectDone("many 3 outgoing line sip:line%@example.org name=Example hold=no");
    EXPECT_TRUE(waitForLine("line3 shown 2 dialing"));
    for (const char *number : {"1", "2", "3"}) {
        const QVariantMap call
            = host.calls().value(QDBusObjectPath(QString("/ringlet/sim/line") + number)).value("zelkovar.Call.Call1");
        EXPECT_EQ(call.value("Uri"), QVariant(QString("sip:line%1@example.org").arg(number)));
        EXPECT_EQ(call.value("RemoteName"), QVariant("Example"));
        EXPECT_EQ(call.value("Holdable"), QVariant(false));
    }
    expectDone("check calls 3");
}

TEST_F(SeveralApplications, AStarStandsForAnyCallsOfAnApplication)
{
    expectDone("many 12 incoming line sip:line%@example.org");
    expectDone("incoming ann sip:ann@example.org");
    expectDone("answer line1*");
    expectDone("check line1* status active");
    expectDone("check line2 status incoming");
    EXPECT_THAT(complaintAbout("check line* status active"), HasSubstr("line2 status is \"incoming\", not \"active\""));
    expectDone("hangup line*");
    expectDone("check line* status gone");
    expectDone("check calls 1");
    EXPECT_THAT(complaintAbout("hangup line*"), HasSubstr("there is no call \"line*\"; calls: ann"));
}

TEST_F(SeveralApplications, ManySaysWhatIsWrongWithIt)
{
    EXPECT_THAT(complaintAbout("many 3 incoming line"), HasSubstr("usage: many COUNT incoming|outgoing CALL ADDRESS"));
    EXPECT_THAT(complaintAbout("many 0 incoming line sip:x"), HasSubstr("\"0\" is no number from 1 to 10000"));
    EXPECT_THAT(complaintAbout("many 10001 incoming line sip:x"), HasSubstr("\"10001\" is no number"));
    EXPECT_THAT(
        complaintAbout("many 3 sideways line sip:x"), HasSubstr("\"sideways\" is neither incoming nor outgoing"));
    EXPECT_THAT(complaintAbout("many 3 incoming li-ne sip:x"), HasSubstr("letters, digits and _ only"));
    expectDone("incoming line2 sip:x");
    EXPECT_THAT(complaintAbout("many 3 incoming line sip:x"), HasSubstr("there is a call \"line2\" already"));
}

TEST_F(SeveralApplications, AnApplicationHasAConnectionAndCallsOfItsOwn)
{
    const QString first = host.application();
    startPhone();
    EXPECT_NE(phone, first);
    EXPECT_EQ(host.application(), phone);
    expectDone("incoming phone/ann sip:ann@example.org");
    expectDone("incoming ann sip:other@example.org");
    EXPECT_TRUE(waitForLine("phone/ann announced 3 incoming"));
    ASSERT_TRUE(host.waitForWire("InterfacesAdded /ringlet/phone/ann"));
    host.call("/ringlet/phone/ann", "zelkovar.Call.Call1", "Accept");
    EXPECT_TRUE(waitForLine("phone/ann command accept"));
    EXPECT_TRUE(waitForLine("phone/ann status 5 active"));
    expectDone("check phone/ann status active");
    expectDone("check ann status incoming");
    expectDone("check phone/calls 1");
    expectDone("check phone/host registered");
    EXPECT_THAT(complaintAbout("check phone/host absent"), HasSubstr("phone/host is \"registered\", not \"absent\""));
    expectDone("calls");
    EXPECT_TRUE(waitForLine("call phone/ann status 5 active shown yes \"sip:ann@example.org\" \"\""));
    EXPECT_TRUE(waitForLine("calls 2"));
}

TEST_F(SeveralApplications, AnApplicationMayHaveSeveralManagers)
{
    expectDone("application phone manager=/home manager=/office");
    ASSERT_TRUE(waitForLine("application phone registered /home"));
    ASSERT_TRUE(waitForLine("application phone registered /office"));
    EXPECT_THAT(linesThatStart("application phone host appeared"), SizeIs(1));
    expectDone("incoming phone/ann sip:ann@example.org manager=/office");
    EXPECT_TRUE(host.waitForWire("InterfacesAdded /office/ann"));
}

TEST_F(SeveralApplications, LeaveClosesTheConnectionWithoutAWord)
{
    startPhone();
    expectDone("incoming phone/ann sip:ann@example.org");
    ASSERT_TRUE(waitForLine("phone/ann shown 3 incoming"));
    host.forgetWire();
    const int before = linesThatStart("phone/").size();
    expectDone("leave phone");
    EXPECT_TRUE(waitForLine("application phone left"));
    EXPECT_TRUE(waitFor([&] { return !isOnBus(phone); }));
    expectDone("check host registered");
    EXPECT_THAT(host.wire().filter("StatusChanged") + host.wire().filter("InterfacesRemoved"), IsEmpty());
    EXPECT_EQ(linesThatStart("phone/").size(), before);
    EXPECT_EQ(linesThatStart("application phone").constLast(), "application phone left");
    EXPECT_THAT(complaintAbout("check phone/ann status gone"),
        HasSubstr("there is no application \"phone\"; applications: none"));
}

TEST_F(SeveralApplications, WhatWasSentBeforeLeavingArrives)
{
    startPhone();
    expectDone("many 50 incoming phone/line sip:line%@example.org\nleave phone");
    EXPECT_TRUE(host.waitForWire("InterfacesAdded /ringlet/phone/line50"));
}

TEST_F(SeveralApplications, ANameCanBeUsedAgainWhenItsApplicationHasLeft)
{
    startPhone();
    const QString before = phone;
    expectDone("leave phone");
    expectDone("application phone");
    ASSERT_TRUE(waitForLine("application phone registered /ringlet/phone", 2));
    EXPECT_EQ(host.application(), linesThatStart("application phone connected ").constLast().section(' ', -1));
    EXPECT_NE(host.application(), before);
}

TEST_F(SeveralApplications, AllEndTheirCallsWhenTheProgramEnds)
{
    startPhone();
    expectDone("incoming ann sip:ann@example.org");
    expectDone("incoming phone/bob sip:bob@example.org");
    host.settle("/ringlet/phone");
    program.type("quit");
    EXPECT_EQ(program.waitForExit(), 0);
    EXPECT_TRUE(host.waitForWire("InterfacesRemoved /ringlet/sim/ann"));
    EXPECT_TRUE(host.waitForWire("InterfacesRemoved /ringlet/phone/bob"));
    EXPECT_THAT(host.wire().filter("StatusChanged"), SizeIs(2));
}

TEST_F(SeveralApplications, SayWhatIsWrongWithThem)
{
    startPhone();
    EXPECT_THAT(complaintAbout("application"), HasSubstr("usage: application NAME [manager=PATH]..."));
    EXPECT_THAT(complaintAbout("application phone"), HasSubstr("there is an application \"phone\" already"));
    EXPECT_THAT(complaintAbout("application my-phone"),
        HasSubstr("an application cannot be named \"my-phone\": letters, digits and _ only"));
    EXPECT_THAT(complaintAbout("application two colour=red"),
        HasSubstr("\"colour=red\" is no option of an application; there is manager="));
    EXPECT_THAT(complaintAbout("application two manager=calls"), HasSubstr("\"calls\" is no path for a call manager"));
    EXPECT_THAT(
        complaintAbout("application two manager=/a manager=/a/b"), HasSubstr("/a/b lies among the calls of /a"));
    EXPECT_THAT(complaintAbout("incoming nobody/ann sip:x"),
        HasSubstr("there is no application \"nobody\"; applications: phone"));
    EXPECT_THAT(complaintAbout("hangup phone/ann"), HasSubstr("there is no call \"phone/ann\"; calls: none"));
    EXPECT_THAT(complaintAbout("leave \"\""), HasSubstr("an application cannot be named \"\""));
    EXPECT_THAT(complaintAbout("leave nobody"), HasSubstr("there is no application \"nobody\"; applications: phone"));
}

} // namespace
