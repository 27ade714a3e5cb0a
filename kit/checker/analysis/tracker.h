// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_TRACKER_H
#define KIT_CHECKER_TRACKER_H

#include "analysis/calltracker.h"
#include "analysis/commandtracker.h"
#include "analysis/occasion.h"
#include "analysis/questions.h"

/** Keeps the world as the messages say that it is, and says what happens. */
class Tracker
{
public:
    Tracker(Analysis &analysis, World &world);

    void add(const Message &message);

private:
    void addCall(const Message &message);
    void addReply(const Message &message);
    void addSignal(const Message &message);
    void addBusCall(const Message &message);
    void addRegistration(const Message &message);
    void addQuestion(const Message &message);

    void answerRegistration(const Message &message, const Question &question);
    void answerSnapshot(const Message &message, const Question &question);
    void answerProbe(const Message &message, const Question &question);
    void answerManagers(const Message &message);
    void answerOwner(const Message &message);
    void answerProcess(const Message &message, const Question &question);

    void changeOwner(const Message &message);
    void changeHost(const Message &message, std::string_view owner);
    void leave(const Message &message, std::string_view name);
    void learnHost(std::string_view owner);

    Analysis &m_analysis;
    World &m_world;
    Questions m_questions;
    CallTracker m_calls;
    CommandTracker m_commands;
};

#endif
