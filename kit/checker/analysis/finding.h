// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_FINDING_H
#define KIT_CHECKER_FINDING_H

#include "analysis/message.h"
#include "analysis/rule.h"

#include <deque>
#include <functional>
#include <string>

/** A rule that an application has broken, and how often. */
struct Finding
{
    const Rule *rule = nullptr;
    Severity severity = Severity::Error;
    std::string application; // its unique name
    std::string who; // the same for people, ":1.42 softphone, pid 4711"
    std::string path; // the object that it is about; empty when it is about none
    std::string detail; // tells findings of one rule apart, such as the property's name
    std::string what; // one or two sentences
    Time time = 0;
    std::uint64_t number = 0; // of the message; 0 when it is about what is now, or about what did not come
    unsigned times = 1;
    int cause = -1; // the finding that this one follows from
    std::vector<std::string> follows; // what else came of it

    /** What, why it matters, and what to do. */
    std::string text() const;
};

/** All findings, each mistake once: what is found again is counted, what follows from another is put under it. */
class Findings
{
public:
    /** Adds it, or counts it; its index. */
    int add(Finding finding);

    /** Notes that this, too, comes of a finding. */
    void follow(int cause, const std::string &text);

    /** What was wrong has been put right: it is a note from now on. */
    void soften(int index) { m_findings.at(static_cast<std::size_t>(index)).severity = Severity::Note; }

    const std::deque<Finding> &all() const { return m_findings; }

    /** Whether an error or a warning is among those that follow from no other. */
    bool isAnyCounted(const std::function<bool(const Finding &)> &isWanted) const;

    /** Told of every finding that is new, and follows from no other so far. */
    std::function<void(const Finding &)> onNew;

private:
    int indexOf(const Finding &finding) const;
    int causeOf(const Finding &finding) const;
    void adopt(int cause);

    std::deque<Finding> m_findings;
};

#endif
