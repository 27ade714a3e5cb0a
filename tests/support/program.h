// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_PROGRAM_H
#define TESTS_PROGRAM_H

#include <QtCore/QProcess>
#include <QtCore/QSet>
#include <QtCore/QStringList>

/**
 * A program that a test starts, watches and ends. It is ended with this object, by SIGTERM first, so that what
 * looks for leaks gets to run; and killed with the test process should that die first. Output is kept line by
 * line. Needs an application object.
 *
 * A program is lost when it has ended and nobody wanted that: by a signal that the test has not sent, or with an
 * exit code other than 0 that the test has not waited for; and one that has to stay, however it has ended. A lost
 * program is a failure of the test, told once, in the next wait for anything, when the test ends, or when this
 * object goes.
 */
class Program : private QProcess
{
public:
    Program();
    ~Program() override;

    /**
     * Whether the program could be started. The host program, voicecalld, is run by the program whose path
     * RINGLET_HOST_WRAPPER in the environment says, if it says any: its command line comes as arguments.
     */
    bool start(const QString &file, const QStringList &arguments, const QStringList &environment = {});

    /** It is a host, a bus or the like, which does not end by itself. */
    void setMustStay() { m_mustStay = true; }

    /** It may end in any way from now on: the test looks for itself. */
    void setMayEnd() { m_mayEnd = true; }

    /** Adds a failure for each program that is lost; whether there is one that was lost at any time. */
    static bool reportLost();

    /** Standard error goes to this file from the next start on; errorOutput() stays empty then. */
    void setStandardErrorFile(const QString &file) { QProcess::setStandardErrorFile(file); }

    using QProcess::processId;

    bool isRunning() const { return state() == QProcess::Running; }

    /** Writes a line to its standard input. */
    void type(const QString &line);

    /** Ends its standard input. */
    using QProcess::closeWriteChannel;

    /** Sends a signal such as SIGTERM. */
    void signal(int number);

    /** Complete lines of standard output so far, without their ends. */
    QStringList lines();

    /** Standard error so far. */
    QString errorOutput();

    /** Waits until a line that contains `text` has come, from line `from` on; false when none came. */
    bool waitForOutput(const QString &text, int from = 0);

    /** Waits until standard error contains `text`. */
    bool waitForError(const QString &text);

    /** Waits until it has ended by itself; its exit code, or -1 when it crashed or did not end. */
    int waitForExit();

protected:
    void setupChildProcess() override;

private:
    bool hasEnded();
    bool isLost();
    bool endsAsAsked();
    void report(const char *what);
    void end();

    bool m_mustStay = false;
    bool m_mayEnd = false;
    bool m_wasLost = false;
    QSet<int> m_signals; // sent since the start
    QString m_file;
    QString m_output;
    QString m_errors;
};

#endif
