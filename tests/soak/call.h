// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_SOAK_CALL_H
#define TESTS_SOAK_CALL_H

#include "busconnection.h"
#include "callscript.h"
#include "hostclient.h"
#include "objectreport.h"

/** One call of an application, which lives as its script says. */
class Call
{
public:
    /** The URI is how the host's call list and this meet. One that stays up is not withdrawn at its end. */
    Call(BusConnection &bus, HostClient &host, const CallScript &script, const std::string &manager,
        const std::string &uri, bool staysUp);

    const std::string &path() const { return m_path; }
    const std::string &uri() const { return m_uri; }

    /** The call as it is now. */
    ObjectReport report() const;

    void announce();

    /** The host shows it, at this path of its own, and the life begins. That it shows it again changes nothing. */
    void shown(const std::string &hostPath);

    /** The host shows this status, by its own numbers. */
    void statusShown(int hostStatus);

    /** The host has called this method of the call. */
    void commanded(const std::string &member);

    /** Whether the script is at its end. */
    bool isOver() const { return !m_hostPath.empty() && m_position == m_script.steps.size(); }

private:
    const Step &step() const { return m_script.steps.at(m_position); }
    void advance();
    void askHost();
    void perform();
    void request(Step::Request what);
    void withdraw();
    void announce(const ObjectReport &what);

    BusConnection &m_bus;
    HostClient &m_host;
    const CallScript &m_script;
    const std::string m_manager;
    const std::string m_path;
    const std::string m_uri;
    const bool m_staysUp;
    std::string m_hostPath;
    uint32_t m_status;
    int m_shownStatus = 0; // by the host's numbers
    bool m_asked = false; // the host's user has done what this step says
    size_t m_position = 0;
};

#endif
