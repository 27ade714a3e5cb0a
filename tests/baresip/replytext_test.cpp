// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

// Read from what baresip 1.0.0 has answered.

#include "replytext.h"

#include "printers.h"

#include <gmock/gmock.h>

using Ringlet::CallStatus;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString callDetailsAnswer
    = QStringLiteral("\n===== Call debug (INCOMING) =====\n local_uri: Ann Example <sip:ann@127.0.0.1:15060>\n"
                     " peer_uri:  Ben Example <sip:ben@127.0.0.1:25060>\n af=AF_INET id=a452072787237bf8\n"
                     " direction: Incoming\nSDP session\n  local attributes:\n    tool='baresip 1.0.0'\n"
                     "  remote attributes:\n    tool='baresip 1.0.0'\nsession media:\n");

const QString audioAnswer
    = QStringLiteral("\n--- Audio stream ---\n tx:   encode: PCMU 8000Hz/1ch ptime=20ms S16LE\n"
                     "       aubuf: wish_sz=3840 cur_sz=0 filling=0 (cur 0.00ms, max 600.00ms, or 0, ur 0)\n"
                     "       source: ausine,440 S16LE\n       time = 1.320 sec\n rx:   decode: PCMU 8000Hz/1ch S16LE\n"
                     "       aubuf: wish_sz=320 cur_sz=2560 filling=1 (cur 160.00ms, max 160.00ms, or 56, ur 0)\n"
                     "       player: aubridge,a S16LE\n       n_discard:0\n       time = 1.260 sec\n"
                     " audio tx pipeline:      ausine ---> sndfile ---> PCMU\n");

// "line current status" of each, status "-" when it is none.
QStringList read(const QString &text)
{
    const auto calls = ReplyText::callList(text);
    if (!calls)
        return {"unreadable"};
    QStringList rows;
    for (const ReplyText::CallLine &call : *calls)
        rows.append(QString::number(call.number) + (call.isCurrent ? " current " : " other ")
            + (call.status ? Ringlet::statusName(*call.status) : QStringLiteral("-")));
    return rows;
}

} // namespace

TEST(CallList, ShowsLinesStatusAndTheCurrentCall)
{
    EXPECT_THAT(read("\n--- Active calls (2) ---\n"
                     "  [line 1]  0:00:03  ESTABLISHED  (on hold)  sip:ben@127.0.0.1:25060\n"
                     "> [line 12]  123:00:00  ESTABLISHED             sip:cid@127.0.0.1:26060\n\n"),
        ElementsAre("1 other held", "12 current active"));
}

TEST(CallList, KnowsTheStatesBeforeAnAnswer)
{
    EXPECT_THAT(read("\n--- Active calls (5) ---\n"
                     "  [line 1]  0:00:00   INCOMING             sip:ben@127.0.0.1\n"
                     "  [line 2]  0:00:00   OUTGOING             sip:ben@127.0.0.1\n"
                     "  [line 3]  0:00:00    RINGING             sip:ben@127.0.0.1\n"
                     "  [line 4]  0:00:00      EARLY             sip:ben@127.0.0.1\n"
                     "> [line 5]  0:00:00 TERMINATED             sip:ben@127.0.0.1\n\n"),
        ElementsAre("1 other incoming", "2 other dialing", "3 other dialing", "4 other dialing", "5 current -"));
}

TEST(CallList, IsEmptyWithoutCalls) { EXPECT_THAT(read("\n--- Active calls (0) ---\n\n"), IsEmpty()); }

TEST(CallList, OfWhichALineCannotBeReadIsNotGuessed)
{
    EXPECT_THAT(read(""), ElementsAre("unreadable"));
    EXPECT_THAT(read("command not found (listcalls)\n"), ElementsAre("unreadable"));
    EXPECT_THAT(read("\n--- Active calls (1) ---\n\n"), ElementsAre("unreadable"));
    EXPECT_THAT(
        read("\n--- Active calls (1) ---\n> line 1 ESTABLISHED sip:ben@127.0.0.1\n"), ElementsAre("unreadable"));
    EXPECT_THAT(read("\n--- Active calls (99999999999999999999) ---\n"), ElementsAre("unreadable"));
}

TEST(CallDetails, ShowIdentityDirectionAndFarEnd)
{
    const auto details = ReplyText::callDetails(callDetailsAnswer);
    ASSERT_TRUE(details);
    EXPECT_EQ(details->id, "a452072787237bf8");
    EXPECT_TRUE(details->isIncoming);
    EXPECT_EQ(details->address, "sip:ben@127.0.0.1:25060");
    EXPECT_EQ(details->name, "Ben Example");
}

TEST(CallDetails, OfAnOutgoingCallHaveNoName)
{
    const auto details = ReplyText::callDetails(QString(callDetailsAnswer)
                                                    .replace("  Ben Example <", "   <")
                                                    .replace("direction: Incoming", "direction: Outgoing"));
    ASSERT_TRUE(details);
    EXPECT_FALSE(details->isIncoming);
    EXPECT_EQ(details->name, "");
    EXPECT_EQ(details->address, "sip:ben@127.0.0.1:25060");
}

TEST(CallDetails, KeepANameThatLooksLikeAnAddress)
{
    const auto details = ReplyText::callDetails(
        QString(callDetailsAnswer).replace("Ben Example", QStringLiteral("Cid, \\\"the\\\" <Ünï>")));
    ASSERT_TRUE(details);
    EXPECT_EQ(details->name, QStringLiteral("Cid, \"the\" <Ünï>"));
    EXPECT_EQ(details->address, "sip:ben@127.0.0.1:25060");
}

TEST(CallDetails, AreNotTakenFromANameOfSeveralLines)
{
    const auto details = ReplyText::callDetails(QString(callDetailsAnswer)
                                                    .replace("Ben Example",
                                                        "X <sip:x@127.0.0.1>\r\n af=AF_INET id=of-another\r\n"
                                                        " direction: Outgoing\r\n SDP session\r\n Y"));
    ASSERT_TRUE(details);
    EXPECT_EQ(details->id, "a452072787237bf8");
    EXPECT_TRUE(details->isIncoming);
    EXPECT_EQ(details->address, "sip:ben@127.0.0.1:25060");
    EXPECT_THAT(details->name.toStdString(), testing::StartsWith("X <sip:x@127.0.0.1> af=AF_INET"));
}

TEST(CallDetails, AreUnsetWithoutACall)
{
    EXPECT_FALSE(ReplyText::callDetails("\n(no active calls)\n"));
    EXPECT_FALSE(ReplyText::callDetails(""));
    EXPECT_FALSE(ReplyText::callDetails(QString(callDetailsAnswer).replace(" id=", " ")));
}

TEST(Accounts, ShowAllAndTheCurrentOne)
{
    const auto accounts
        = ReplyText::accounts("\n--- User Agents (3) ---\n  sip:ann@127.0.0.1                         \n"
                              "> sip:ann2@127.0.0.1:5070                    OK \n  sips:c@example.org     ERR \n\n");
    ASSERT_TRUE(accounts);
    EXPECT_THAT(accounts->all, ElementsAre("sip:ann@127.0.0.1", "sip:ann2@127.0.0.1:5070", "sips:c@example.org"));
    EXPECT_EQ(accounts->current, "sip:ann2@127.0.0.1:5070");
}

TEST(Accounts, MayBeNone)
{
    const auto accounts = ReplyText::accounts("\n--- User Agents (0) ---\n\n");
    ASSERT_TRUE(accounts);
    EXPECT_THAT(accounts->all, IsEmpty());
}

TEST(Accounts, OfWhichOneCannotBeReadAreNotGuessed)
{
    EXPECT_FALSE(ReplyText::accounts(""));
    EXPECT_FALSE(ReplyText::accounts("command not found (reginfo)\n"));
    EXPECT_FALSE(ReplyText::accounts("\n--- User Agents (2) ---\n> sip:ann@127.0.0.1\n  ben\n"));
}

TEST(Muted, IsReadFromTheAnswerToTheToggle)
{
    EXPECT_EQ(ReplyText::muted("\ncall muted\n"), true);
    EXPECT_EQ(ReplyText::muted("\ncall un-muted\n"), false);
    EXPECT_EQ(ReplyText::muted("command not found (mute)\n"), std::nullopt);
    EXPECT_EQ(ReplyText::muted(""), std::nullopt);
}

TEST(AudioDevices, AreReadForBothDirections)
{
    const ReplyText::AudioDevices devices = ReplyText::audioDevices(audioAnswer);
    EXPECT_EQ(devices.source, "ausine,440");
    EXPECT_EQ(devices.player, "aubridge,a");
}

TEST(AudioDevices, MayHoldSpaces)
{
    const ReplyText::AudioDevices devices
        = ReplyText::audioDevices(QString(audioAnswer).replace("ausine,440", "alsa,hw:My Card,0"));
    EXPECT_EQ(devices.source, "alsa,hw:My Card,0");
}

TEST(AudioDevices, AreEmptyWithoutAStream)
{
    EXPECT_EQ(ReplyText::audioDevices("command not found (audio_debug)\n").source, "");
}

TEST(SwitchingFault, IsFoundInAnAnswerThatIsAlwaysInOrder)
{
    EXPECT_EQ(ReplyText::switchingFault("switch audio device: ausine,800\n"), "");
    EXPECT_EQ(ReplyText::switchingFault("switch audio player: aubridge,a\n"), "");
    EXPECT_EQ(ReplyText::switchingFault("switch audio device: aufile,/x\nfailed to set audio-source (No such file)\n"),
        "failed to set audio-source (No such file)");
    EXPECT_EQ(ReplyText::switchingFault("no such audio-source: nosuch\n"), "no such audio-source: nosuch");
    EXPECT_EQ(ReplyText::switchingFault("\rFormat should be: driver,device\n"), "Format should be: driver,device");
    EXPECT_NE(ReplyText::switchingFault(""), "");
}
