// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "program.h"

#include "waitfor.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFileInfo>
#include <csignal>
#include <sys/prctl.h>

Program::Program() = default;

// What is to run the program; empty where it runs by itself.
static QString wrapperOf(const QString &file)
{
    const bool isHost = QFileInfo(file).fileName() == QLatin1String("voicecalld");
    return isHost ? qEnvironmentVariable("RINGLET_HOST_WRAPPER") : QString();
}

Program::~Program()
{
    if (state() == QProcess::NotRunning)
        return;
    // A checker looks for leaks when its program ends by itself.
    if (m_isWrapped) {
        signal(SIGTERM);
        waitForExit();
    }
    kill();
    QProcess::waitForFinished();
}

bool Program::start(const QString &file, const QStringList &arguments, const QStringList &environment)
{
    m_output.clear();
    m_errors.clear();
    if (!environment.isEmpty())
        setEnvironment(QProcess::systemEnvironment() + environment);
    const QString wrapper = wrapperOf(file);
    m_isWrapped = !wrapper.isEmpty();
    if (m_isWrapped)
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

// To process 0 it would go to this one and all of its group.
void Program::signal(int number)
{
    if (isRunning())
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

bool Program::waitForOutput(const QString &text, int from)
{
    return waitForProcess(*this, [&] { return !lines().mid(from).filter(text).isEmpty(); });
}

bool Program::waitForError(const QString &text)
{
    return waitForProcess(*this, [&] { return errorOutput().contains(text); });
}

int Program::waitForExit()
{
    waitForProcess(*this, [&] { return state() == QProcess::NotRunning; });
    return state() == QProcess::NotRunning && exitStatus() == QProcess::NormalExit ? exitCode() : -1;
}

void Program::setupChildProcess() { prctl(PR_SET_PDEATHSIG, SIGKILL); }
