// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_TRIAL_H
#define KIT_CHECKER_TRIAL_H

#include "commands/follower.h"
#include "commands/options.h"
#include "commands/process.h"

#include <set>

/** One step of an examination, and what came of it. */
struct Step
{
    enum class Result { Pass, Fail, NotPossible };

    std::string name;
    Result result = Result::Pass;
    std::string why; // empty when it passed
};

/** A program beside a bus and a host, and everything that is done to it. */
class Trial
{
public:
    explicit Trial(const Options &options) : m_options(options), m_follower(options.host, "") { }

    /** False with `error` when it could not begin. */
    bool start(std::string *error);

    /** Does all steps. */
    void run();

    const std::vector<Step> &steps() const { return m_steps; }
    Findings &findings() { return m_follower.analysis().findings(); }
    bool hadCall() const { return m_hadCall; }

    /** Areas of rules that could be broken in what was done. */
    const std::set<std::string_view> &exercised() const { return m_exercised; }

private:
    using Condition = std::function<bool()>;

    bool waitFor(const Condition &condition, int milliseconds);
    void pass(const std::string &name);
    void fail(const std::string &name, const std::string &why);
    void skip(const std::string &name, const std::string &why);
    void judge(const std::string &name, bool isGood, const std::string &why);

    // The calls of the program, as the host knows them.
    Call *findCall(const std::string &path);
    Call *call() { return findCall(m_path); }
    bool hasStatus(bool (*isIt)(unsigned));
    bool ring(const std::string &command, bool isFirst);
    void pressed(const std::string &name, const char *method, GVariant *arguments, const Condition &effect,
        const std::string &failure);

    // The desktop host, where it can be told to do something.
    std::string hostCall();
    bool press(const char *method, GVariant *arguments = nullptr);
    bool tellAudio(const char *method, GVariant *arguments);
    bool areAllAnswered();
    std::unique_ptr<Process> hostProcess();

    void appear();
    void show();
    void hold();
    void tones();
    void audio();
    void otherDevice();
    void hangUp();
    void reject();
    void commandBehindRemoval();
    void secondCall();
    void dial();
    void restart();
    void stop();
    void loseBus();

    const Options &m_options;
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<Process> m_host;
    std::unique_ptr<Process> m_program;
    Follower m_follower;
    std::string m_application;
    std::string m_path;
    std::set<std::string> m_seen; // paths of calls that have had their turn
    std::set<std::string_view> m_exercised = {"registration", "snapshot"};
    std::vector<Step> m_steps;
    bool m_hadCall = false;
};

#endif
