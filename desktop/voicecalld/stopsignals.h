// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef VOICECALLD_STOPSIGNALS_H
#define VOICECALLD_STOPSIGNALS_H

#include <atomic>
#include <csignal>
#include <thread>

/**
 * Ends the program on SIGINT and SIGTERM: its event loop with 0, or the process itself with 0 if that does not
 * help soon, or at a second signal. A thread of its own waits for them, since the main thread may wait for the
 * bus daemon for a long time.
 *
 * To be made when there is an application object and no thread yet: those that come leave the signals to this one.
 */
class StopSignals
{
public:
    StopSignals();

    /** From here on the process is no longer ended by force. */
    ~StopSignals();

    StopSignals(const StopSignals &) = delete;
    StopSignals &operator=(const StopSignals &) = delete;

private:
    void watch();

    sigset_t m_signals = {};
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

#endif
