// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "replytext.h"

#include <QtCore/QHash>
#include <QtCore/QRegularExpression>

namespace ReplyText {

using Ringlet::CallStatus;

static std::optional<CallStatus> statusOf(const QString &state, bool isOnHold)
{
    static const QHash<QString, CallStatus> statuses = {{QStringLiteral("INCOMING"), CallStatus::Incoming},
        {QStringLiteral("OUTGOING"), CallStatus::Dialing}, {QStringLiteral("RINGING"), CallStatus::Dialing},
        {QStringLiteral("EARLY"), CallStatus::Dialing}, {QStringLiteral("ESTABLISHED"), CallStatus::Active}};
    const auto status = statuses.constFind(state);
    if (status == statuses.cend())
        return std::nullopt;
    return *status == CallStatus::Active && isOnHold ? CallStatus::Held : *status;
}

std::optional<QVector<CallLine>> callList(const QString &text)
{
    static const QRegularExpression heading(QStringLiteral("^--- Active calls \\((\\d{1,6})\\) ---$"));
    static const QRegularExpression line(
        QStringLiteral("^([> ]) \\[line (\\d{1,6})\\] +\\d+:\\d+:\\d+ +([A-Z]+) +(\\(on hold\\))?"));
    int expected = -1;
    QVector<CallLine> calls;
    for (const QString &row : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch start = heading.match(row);
        if (start.hasMatch())
            expected = start.captured(1).toInt();
        const QRegularExpressionMatch match = line.match(row);
        if (match.hasMatch())
            calls.append({match.captured(2).toInt(), match.captured(1) == QLatin1String(">"),
                statusOf(match.captured(3), !match.captured(4).isEmpty())});
    }
    if (calls.size() != expected)
        return std::nullopt;
    return calls;
}

std::optional<CallDetails> callDetails(const QString &text)
{
    // All of it in one piece: a caller's name may hold line breaks, and look like what follows it. But behind
    // its line breaks there is a space.
    static const QRegularExpression form(
        QStringLiteral("\n peer_uri: +(.*?) *<([^<>]*)>\n af=\\S+ id=(\\S+)\n direction: (\\w+)\nSDP session\n"),
        QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    return CallDetails{match.captured(3), match.captured(4) == QLatin1String("Incoming"), match.captured(2),
        plainName(match.captured(1))};
}

std::optional<Accounts> accounts(const QString &text)
{
    static const QRegularExpression heading(
        QStringLiteral("^--- User Agents \\((\\d{1,6})\\) ---$"), QRegularExpression::MultilineOption);
    static const QRegularExpression row(QStringLiteral("^([> ]) (sips?:\\S+)"), QRegularExpression::MultilineOption);
    Accounts accounts;
    for (auto matches = row.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        accounts.all.append(match.captured(2));
        if (match.captured(1) == QLatin1String(">"))
            accounts.current = match.captured(2);
    }
    const QRegularExpressionMatch start = heading.match(text);
    if (!start.hasMatch() || start.captured(1).toInt() != accounts.all.size())
        return std::nullopt;
    return accounts;
}

std::optional<bool> muted(const QString &text)
{
    static const QHash<QString, bool> answers
        = {{QStringLiteral("call muted"), true}, {QStringLiteral("call un-muted"), false}};
    const auto answer = answers.constFind(text.trimmed());
    return answer == answers.cend() ? std::nullopt : std::optional<bool>(*answer);
}

AudioDevices audioDevices(const QString &text)
{
    static const QRegularExpression row(
        QStringLiteral("^ +(source|player): ([^,\\n]*,[^\\n]*?) \\S+$"), QRegularExpression::MultilineOption);
    AudioDevices devices;
    for (auto matches = row.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        (match.captured(1) == QLatin1String("source") ? devices.source : devices.player) = match.captured(2);
    }
    return devices;
}

QString switchingFault(const QString &text)
{
    QStringList rows = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (!rows.isEmpty() && rows.constFirst().startsWith(QLatin1String("switch audio ")))
        rows.removeFirst();
    else if (rows.isEmpty())
        return QStringLiteral("no answer");
    return rows.join(QStringLiteral("; ")).trimmed();
}

QString plainName(const QString &quoted)
{
    static const QRegularExpression protectedCharacter(QStringLiteral("\\\\(.)"));
    return QString(quoted).replace(protectedCharacter, QStringLiteral("\\1")).simplified();
}

} // namespace ReplyText
