// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "program.h"

#include "waitfor.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

static QList<Program *> &programs()
{
    static QList<Program *> all;
    return all;
}

Program::Program() { programs().append(this); }

// What is to run the program; empty where it runs by itself.
static QString wrapperOf(const QString &file)
{
    const bool isHost = QFileInfo(file).fileName() == QLatin1String("voicecalld");
    return isHost ? qEnvironmentVariable("RINGLET_HOST_WRAPPER") : QString();
}

// The test's own event loop keeps running meanwhile.
template <typename Condition>
static bool waitForProcess(QProcess &process, Condition condition)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > patientWaitLimitMs())
            return false;
        QCoreApplication::processEvents();
        if (process.state() == QProcess::NotRunning)
            return condition();
        process.waitForReadyRead(5);
    }
    return true;
}

static bool waitForProcessEnd(QProcess &process)
{
    return waitForProcess(process, [&] { return process.state() == QProcess::NotRunning; });
}

Program::~Program()
{
    programs().removeOne(this);
    if (!isLost() && state() != QProcess::NotRunning)
        end();
    else if (isLost() && !m_wasLost)
        report("has ended by itself");
}

// A checker looks for leaks when its program ends by itself.
void Program::end()
{
    signal(SIGTERM);
    signal(SIGCONT);
    const bool ends = waitForProcessEnd(*this);
    if (!ends) {
        report("does not end when it is asked to");
        kill();
        QProcess::waitForFinished();
    } else if (!m_mayEnd && !endsAsAsked()) {
        report("has not ended well");
    }
}

// Asks the system: whether QProcess knows depends on what the event loop has come to.
bool Program::hasEnded()
{
    if (state() != QProcess::Running)
        return true;
    siginfo_t info{};
    return waitid(P_PID, id_t(processId()), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
}

bool Program::endsAsAsked()
{
    QProcess::waitForFinished();
    return exitStatus() == QProcess::NormalExit ? exitCode() == 0 : m_signals.contains(exitCode());
}

bool Program::isLost()
{
    if (m_wasLost || m_mayEnd || m_file.isEmpty() || !hasEnded())
        return m_wasLost;
    return !endsAsAsked() || (m_mustStay && m_signals.isEmpty());
}

void Program::report(const char *what)
{
    ADD_FAILURE() << m_file.toStdString() << " " << what << ", "
                  << (exitStatus() == QProcess::NormalExit ? "exit code " : "signal ") << exitCode() << "\n"
                  << errorOutput().right(4000).toStdString();
}

bool Program::reportLost()
{
    bool found = false;
    for (Program *program : qAsConst(programs())) {
        const bool isNew = !program->m_wasLost;
        program->m_wasLost = program->isLost();
        if (program->m_wasLost && isNew)
            program->report("has ended by itself");
        found = found || program->m_wasLost;
    }
    return found;
}

bool Program::start(const QString &file, const QStringList &arguments, const QStringList &environment)
{
    m_output.clear();
    m_errors.clear();
    m_signals.clear();
    m_mayEnd = m_wasLost = false;
    m_file = file;
    if (!environment.isEmpty())
        setEnvironment(QProcess::systemEnvironment() + environment);
    const QString wrapper = wrapperOf(file);
    if (!wrapper.isEmpty())
        QProcess::start(wrapper, QStringList(file) + arguments);
    else
        QProcess::start(file, arguments);
    return waitForStarted();
}

void Program::type(const QString &line)
{
    write(line.toUtf8() + '\n');
    waitForBytesWritten();
}

void Program::signal(int number)
{
    // What comes too late has ended nothing; and to process 0 it would go to this one and all of its group.
    if (hasEnded())
        return;
    // Nor have these.
    if (number != SIGSTOP && number != SIGCONT)
        m_signals.insert(number);
    ::kill(pid_t(processId()), number);
}

QStringList Program::lines()
{
    m_output += QString::fromUtf8(readAllStandardOutput());
    QStringList complete = m_output.split(QLatin1Char('\n'));
    complete.removeLast();
    return complete;
}

QString Program::errorOutput()
{
    m_errors += QString::fromUtf8(readAllStandardError());
    return m_errors;
}

bool Program::waitForOutput(const QString &text, int from)
{
    return waitForProcess(*this, [&] { return !lines().mid(from).filter(text).isEmpty() || reportLost(); })
        && !lines().mid(from).filter(text).isEmpty();
}

bool Program::waitForError(const QString &text)
{
    return waitForProcess(*this, [&] { return errorOutput().contains(text) || reportLost(); })
        && errorOutput().contains(text);
}

int Program::waitForExit()
{
    m_mayEnd = true;
    waitForProcessEnd(*this);
    return state() == QProcess::NotRunning && exitStatus() == QProcess::NormalExit ? exitCode() : -1;
}

void Program::setupChildProcess() { prctl(PR_SET_PDEATHSIG, SIGKILL); }
