// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_COMMANDTRACKER_H
#define KIT_CHECKER_COMMANDTRACKER_H

#include "analysis/occasion.h"
#include "analysis/questions.h"

/** Follows what the host asks of calls and tells them. */
class CommandTracker
{
public:
    CommandTracker(Analysis &analysis, World &world);

    /** A command or an update; whether its answer is waited for. */
    bool command(const Message &message);
    void answer(const Message &message, const Question &question);

    /** The host's match rule. */
    void subscribe(std::string_view rule);

private:
    void hearAudio(const Message &message, Call &call);

    Analysis &m_analysis;
    World &m_world;
};

#endif
