// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "output.h"

#include "failure.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <mutex>
#include <poll.h>
#include <thread>
#include <unistd.h>

// The error number, or 0.
static int writeAll(const QByteArray &bytes)
{
    const char *rest = bytes.constData();
    const char *const end = rest + bytes.size();
    while (rest < end) {
        const ssize_t count = write(STDOUT_FILENO, rest, size_t(end - rest));
        if (count >= 0) {
            rest += count;
        } else if (errno == EAGAIN) {
            // Whoever started the program may have made it so.
            pollfd room = {STDOUT_FILENO, POLLOUT, 0};
            poll(&room, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

static QString reasonOf(int error)
{
    return QStringLiteral("cannot write to standard output: %1").arg(QString::fromLocal8Bit(std::strerror(error)));
}

void Output::print(const QByteArray &bytes)
{
    if (const int error = writeAll(bytes))
        throw Failure(ExitCode::NotDone, reasonOf(error));
}

// The thread may outlive the object, and the program may end before the thread.
struct Output::Shared
{
    explicit Shared(Output *output) : output(output) { }

    std::mutex mutex;
    std::condition_variable changed;
    Output *output;
    QByteArray bytes;
    bool isBusy = false;
};

// Signals are for the thread that has the event loop.
static void leaveSignalsToOthers()
{
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

void Output::run(const std::shared_ptr<Shared> &shared)
{
    leaveSignalsToOthers();
    std::unique_lock<std::mutex> lock(shared->mutex);
    while (true) {
        shared->changed.wait(lock, [&] { return shared->isBusy || !shared->output; });
        if (!shared->output)
            return;
        const QByteArray bytes = shared->bytes;
        lock.unlock();
        const int error = writeAll(bytes);
        lock.lock();
        shared->isBusy = false;
        shared->changed.notify_all();
        if (!shared->output)
            return;
        QMetaObject::invokeMethod(shared->output, [output = shared->output, error] {
            if (error)
                emit output->failed(reasonOf(error));
            else
                emit output->idle();
        });
    }
}

Output::Output() : m_shared(std::make_shared<Shared>(this)) { std::thread(run, m_shared).detach(); }

Output::~Output()
{
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    m_shared->output = nullptr;
    m_shared->changed.notify_all();
}

bool Output::isIdle() const
{
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    return !m_shared->isBusy;
}

void Output::write(const QByteArray &bytes)
{
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    m_shared->bytes = bytes;
    m_shared->isBusy = true;
    m_shared->changed.notify_all();
}

void Output::finish()
{
    std::unique_lock<std::mutex> lock(m_shared->mutex);
    m_shared->changed.wait_for(lock, std::chrono::milliseconds(200), [&] { return !m_shared->isBusy; });
}
