// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_PROCESS_H
#define KIT_CHECKER_PROCESS_H

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

/**
 * A program that is started here, in a process group of its own, and ends with this object. Its standard input stays
 * open and empty; what it prints goes to standard error.
 */
class Process
{
public:
    explicit Process(const std::vector<std::string> &command);
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    ~Process();

    /** The words of a shell. */
    static std::vector<std::string> shell(const std::string &command) { return {"/bin/sh", "-c", command}; }

    bool isRunning();
    pid_t pid() const { return m_pid; }

    /** To the whole group. */
    void signal(int number) const;

    /** Waits until it has ended, for so many milliseconds; whether it has. */
    bool waitForEnd(int patience);

    /** Whether a signal has ended it, other than SIGTERM. */
    bool hasCrashed() const;

protected:
    /** With the end of a pipe as its standard output. */
    Process(const std::vector<std::string> &command, int output);

private:
    void start(const std::vector<std::string> &command, int output);

    pid_t m_pid = -1;
    int m_input = -1;
    int m_status = 0;
    bool m_hasEnded = false;
};

/** A message bus of one's own; the session bus of everything that is started behind it. */
class PrivateBus
{
public:
    /** Null with `error` when there is no dbus-daemon. */
    static std::unique_ptr<PrivateBus> start(std::string *error);
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;
    ~PrivateBus();

    Process &process() { return *m_process; }

private:
    PrivateBus() = default;

    std::string m_folder;
    std::unique_ptr<Process> m_process;
};

#endif
