// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_REPLYTEXT_H
#define BARESIP_REPLYTEXT_H

#include <RingletClient/callstatus.h>

#include <QtCore/QStringList>
#include <QtCore/QVector>
#include <optional>

/**
 * What baresip 1.0.0 answers to its commands is text for people. These functions read it; what does not look
 * as expected gives an empty result, never a guess.
 */
namespace ReplyText {

/** A line of the answer to "listcalls", which lists the calls of the current account. */
struct CallLine
{
    /** The number by which the command "line" selects the call. */
    int number = 0;
    /** Whether it is the account's current call. */
    bool isCurrent = false;
    /** Unset in states that last for a moment only, before and after a call. */
    std::optional<Ringlet::CallStatus> status;
};

/** Unset when a line could not be read: then it is not known which calls there are. */
std::optional<QVector<CallLine>> callList(const QString &text);

/** The answer to "callstat": the current call. */
struct CallDetails
{
    QString id;
    bool isIncoming = false;
    QString address;
    QString name;
};

/** Unset when there is no call. */
std::optional<CallDetails> callDetails(const QString &text);

/** The answer to "reginfo". */
struct Accounts
{
    /** Addresses of record, by which the command "uafind" selects an account. */
    QStringList all;
    QString current;
};

/** Unset when a line could not be read. */
std::optional<Accounts> accounts(const QString &text);

/** The answer to "mute", which toggles: whether the microphone is muted now. */
std::optional<bool> muted(const QString &text);

/** The answer to "audio_debug": "driver,device" of each direction; the driver is "none" when nothing is open. */
struct AudioDevices
{
    QString source;
    QString player;
};

AudioDevices audioDevices(const QString &text);

/**
 * The complaint in the answer to "ausrc" or "auplay"; empty if there is none. baresip says that the command
 * was in order whatever came of it.
 */
QString switchingFault(const QString &text);

/** A name out of a SIP header, on one line, without the backslashes that protect characters there. */
QString plainName(const QString &quoted);

} // namespace ReplyText

#endif
