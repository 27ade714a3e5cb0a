// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "callsurvey.h"

#include "baresipcontrol.h"

// How soon a hold is seen that was started at baresip itself.
static constexpr int intervalMs = 400;

static const QString listCommand = QStringLiteral("listcalls");

CallSurvey::CallSurvey(BaresipControl &control, QObject *parent) : QObject(parent), m_control(control)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &CallSurvey::start);
}

void CallSurvey::start()
{
    m_timer.stop();
    if (m_isRunning) {
        m_isWantedAgain = true;
        return;
    }
    m_isRunning = true;
    m_isValid = true;
    m_isWantedAgain = false;
    m_isIdle = false;
    askForAccounts();
}

void CallSurvey::invalidate() { m_isValid = false; }

void CallSurvey::forget(const QString &id)
{
    for (auto entry = m_identities.begin(); entry != m_identities.end();)
        entry = entry->id == id ? m_identities.erase(entry) : std::next(entry);
}

void CallSurvey::reset()
{
    m_timer.stop();
    m_isRunning = false;
    m_hasComplained = false;
    m_identities.clear();
}

void CallSurvey::askForAccounts()
{
    m_control.run({{{QStringLiteral("reginfo"), {}, {}}},
        [this](const CommandSequence::Result &result) { onAccounts(result.replies.constLast().text); }});
}

void CallSurvey::onAccounts(const QString &text)
{
    const auto accounts = ReplyText::accounts(text);
    if (!accounts) {
        complain(QStringLiteral("baresip's list of accounts cannot be read"));
        finish();
        return;
    }
    m_accounts = *accounts;
    askForLists();
}

// Without a second account there is nothing to select.
QVector<Command> CallSurvey::selectAccount(const QString &account) const
{
    if (m_accounts.all.size() < 2)
        return {};
    return {{QStringLiteral("uafind"), account, QStringLiteral("ua: ")}};
}

void CallSurvey::askForLists()
{
    QVector<Command> commands;
    for (const QString &account : qAsConst(m_accounts.all))
        commands += selectAccount(account) << Command{listCommand, {}, {}};
    commands += selectAccount(m_accounts.current);
    if (commands.isEmpty()) {
        m_lines.clear();
        complete();
        return;
    }
    m_control.run({commands, [this](const CommandSequence::Result &result) { onLists(result); },
        CommandSequence::Pace::Together});
}

void CallSurvey::onLists(const CommandSequence::Result &result)
{
    if (!result.isComplete || result.isDisturbed) {
        finish();
        return;
    }
    m_lines.clear();
    const int repliesEach = m_accounts.all.size() < 2 ? 1 : 2;
    for (int i = 0; i < m_accounts.all.size(); ++i) {
        const auto list = ReplyText::callList(result.replies.at((i + 1) * repliesEach - 1).text);
        if (!list) {
            complain(QStringLiteral("baresip's list of calls cannot be read"));
            finish();
            return;
        }
        for (const ReplyText::CallLine &line : *list)
            m_lines.insert({m_accounts.all.at(i), line.number}, line);
    }
    askForDetails();
}

void CallSurvey::askForDetails()
{
    for (auto line = m_lines.cbegin(); line != m_lines.cend(); ++line) {
        if (m_identities.contains(line.key()))
            continue;
        m_control.run({detailCommands(line.key()),
            [this, line = line.key()](const CommandSequence::Result &result) { onDetails(line, result); },
            CommandSequence::Pace::Together});
        return;
    }
    complete();
}

QVector<Command> CallSurvey::detailCommands(const Line &line) const
{
    const auto select = [](int number) {
        return Command{QStringLiteral("line"), QString::number(number), QStringLiteral("setting current call")};
    };
    QVector<Command> commands = selectAccount(line.first);
    commands << select(line.second) << Command{QStringLiteral("callstat"), {}, {}};
    for (auto other = m_lines.cbegin(); other != m_lines.cend(); ++other) {
        if (other.key().first == line.first && other->isCurrent)
            commands << select(other.key().second);
    }
    return commands + selectAccount(m_accounts.current);
}

void CallSurvey::onDetails(const Line &line, const CommandSequence::Result &result)
{
    const int position = m_accounts.all.size() < 2 ? 1 : 2;
    const auto details = ReplyText::callDetails(result.replies.value(position).text);
    if (!details || !result.isComplete || result.isDisturbed) {
        if (result.isComplete && !details)
            complain(QStringLiteral("baresip's details of a call cannot be read"));
        finish();
        return;
    }
    m_identities.insert(line, {details->id, line.first, details->isIncoming, details->address, details->name});
    askForDetails();
}

void CallSurvey::complete()
{
    QVector<SurveyedCall> calls;
    for (auto line = m_lines.cbegin(); line != m_lines.cend(); ++line) {
        if (line->status)
            calls.append({m_identities.value(line.key()), *line->status});
    }
    if (m_isValid)
        emit completed(calls);
    m_isIdle = m_lines.isEmpty();
    finish();
}

// It would be the same again in a moment.
void CallSurvey::complain(const QString &text)
{
    if (!m_hasComplained)
        emit warning(text);
    m_hasComplained = true;
}

// What could not be read will not be readable at once, so that is no reason to hurry.
void CallSurvey::finish()
{
    m_isRunning = false;
    if (m_isWantedAgain || !m_isValid)
        start();
    else if (!m_isIdle)
        m_timer.start(intervalMs);
}
