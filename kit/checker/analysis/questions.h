// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_QUESTIONS_H
#define KIT_CHECKER_QUESTIONS_H

#include "analysis/world.h"

/** A call whose reply says something. */
struct Question
{
    enum class About { Registration, Snapshot, Probe, Managers, Process, HostOwner, HostCalls, Command };

    About about = About::Command;
    std::string application; // unique name of whoever is asked, or asked about
    std::string path;
};

/** Calls that wait for their replies, by caller and serial. */
class Questions
{
public:
    void ask(const Message &call, Question::About about, std::string application = {}, std::string path = {});

    /** The question that a reply belongs to, which waits no longer. */
    std::optional<Question> take(const Message &reply);

    /** A connection has left, so nothing will be answered to it. */
    void forget(std::string_view caller);

private:
    ByName<std::map<std::uint32_t, Question>> m_waiting;
};

#endif
