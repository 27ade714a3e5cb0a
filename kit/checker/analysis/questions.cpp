// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "analysis/questions.h"

// Of one caller; behind that the oldest is given up, for a capture may lack the replies.
static constexpr std::size_t mostWaiting = 4096;

void Questions::ask(const Message &call, Question::About about, std::string application, std::string path)
{
    auto caller = m_waiting.find(call.sender);
    if (caller == m_waiting.end())
        caller = m_waiting.emplace(call.sender, std::map<std::uint32_t, Question>()).first;
    if (caller->second.size() >= mostWaiting)
        caller->second.erase(caller->second.begin());
    caller->second[call.serial] = {about, std::move(application), std::move(path)};
}

std::optional<Question> Questions::take(const Message &reply)
{
    const auto caller = m_waiting.find(reply.destination);
    if (caller == m_waiting.end())
        return std::nullopt;
    const auto found = caller->second.find(reply.replySerial);
    if (found == caller->second.end())
        return std::nullopt;
    Question question = std::move(found->second);
    caller->second.erase(found);
    return question;
}

void Questions::forget(std::string_view caller)
{
    const auto found = m_waiting.find(caller);
    if (found != m_waiting.end())
        m_waiting.erase(found);
}
