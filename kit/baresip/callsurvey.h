// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_CALLSURVEY_H
#define BARESIP_CALLSURVEY_H

#include "command.h"
#include "replytext.h"
#include "softphonecall.h"

#include <QtCore/QMap>
#include <QtCore/QPair>
#include <QtCore/QTimer>

class BaresipControl;

/** A call that baresip has, and what it does. */
struct SurveyedCall
{
    CallIdentity identity;
    Ringlet::CallStatus status = Ringlet::CallStatus::Disconnected;
};

/**
 * Asks baresip which calls it has. Its lists tell no identities, and the details tell no line: so each new
 * line is selected once to ask for its details, and what was selected before is selected again.
 */
class CallSurvey : public QObject
{
    Q_OBJECT
public:
    explicit CallSurvey(BaresipControl &control, QObject *parent = nullptr);

    /** Asks now, or again when the survey that is under way has ended. While there are calls, it asks on. */
    void start();

    /** A call has begun or ended: what has been asked so far does not fit together any more. */
    void invalidate();

    /** The line of this call may be given to another one. */
    void forget(const QString &id);

    /** The connection was lost: nothing is known, and no answer will come. */
    void reset();

Q_SIGNALS:
    /** All calls, as they are now. */
    void completed(const QVector<SurveyedCall> &calls);
    void warning(const QString &text);

private:
    /** Account and number. */
    using Line = QPair<QString, int>;

    void askForAccounts();
    void onAccounts(const QString &text);
    void askForLists();
    void onLists(const CommandSequence::Result &result);
    void askForDetails();
    void onDetails(const Line &line, const CommandSequence::Result &result);
    void complete();
    void finish();
    void complain(const QString &text);
    QVector<Command> selectAccount(const QString &account) const;
    QVector<Command> detailCommands(const Line &line) const;

    BaresipControl &m_control;
    QTimer m_timer;
    ReplyText::Accounts m_accounts;
    QMap<Line, ReplyText::CallLine> m_lines;
    QMap<Line, CallIdentity> m_identities;
    bool m_isRunning = false;
    bool m_isValid = false;
    bool m_isWantedAgain = false;
    /** baresip has no calls, and will tell when one begins. */
    bool m_isIdle = false;
    bool m_hasComplained = false;
};

#endif
