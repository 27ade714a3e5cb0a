// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_CALLTRACKER_H
#define KIT_CHECKER_CALLTRACKER_H

#include "analysis/occasion.h"

/** Keeps what a host knows of every application's calls. */
class CallTracker
{
public:
    CallTracker(Analysis &analysis, World &world);

    /** The application of this unique name, which is made if there was none. */
    Application &application(std::string_view name);

    /** A signal of an application. */
    void signal(const Message &message);

    /** A signal by which the host tells what it shows. */
    void relay(const Message &message);

    /** An answer to the host's GetManagedObjects. */
    void snapshot(const Message &message, Application &application, Manager &manager, std::string_view path);

    /** An answer to somebody else's, of objects that were there before anybody watched. */
    void assume(const Message &message, Application &application, Manager &manager, std::string_view path);

    /** Whether an answer to GetManagedObjects has calls in it. */
    static bool holdsCalls(const Message &message);

    void endAll(const Message &message, Application &application);

    /** The host has left, and nobody knows any call. */
    void forgetAll();

private:
    void announce(Occasion occasion);
    void remove(Occasion occasion);
    void changeStatus(Occasion occasion);
    void report(Occasion occasion);
    void end(Occasion occasion);
    Call &freshCall(Application &application, std::string_view path);
    void readAll(const Message &message, Application &application, Manager &manager, std::string_view path);

    Analysis &m_analysis;
    World &m_world;
};

#endif
