// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_TERMINAL_H
#define TESTS_TERMINAL_H

#include <QtCore/QByteArray>
#include <QtCore/QStringList>
#include <sys/types.h>

/** A program on a pseudo-terminal, and what a person would see there. It is killed with this object. */
class Terminal
{
public:
    /** Throws std::runtime_error when no terminal can be had. */
    Terminal(const QByteArray &program, const QByteArray &argument, int columns, int rows);
    ~Terminal();

    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    /** Changes the size, which the program is told by signal. */
    void resize(int columns, int rows);

    /** Types these characters. */
    void press(const QByteArray &keys);

    /** Presses Ctrl-C. */
    void interrupt() { press("\003"); }

    /** Whether typed characters are shown, as a shell expects it. */
    bool echoes() const;

    /** Sends the program a signal. */
    void signal(int number) const;

    /** Whether the program is stopped, as by Ctrl-Z. */
    bool isStopped() const;

    /** Waits until the screen shows exactly these lines; what it shows in the end. */
    QStringList waitForScreen(const QStringList &lines);

    /** Waits until it has ended; its exit code, or -1 when it crashed or did not end. */
    int waitForExit();

    /** All that was written so far. */
    QByteArray raw();

private:
    QStringList screen();

    int m_master = -1;
    pid_t m_pid = -1;
    QByteArray m_output;
};

#endif
