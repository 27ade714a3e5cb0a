// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "standardinput.h"

#include <QtCore/QSocketNotifier>
#include <array>
#include <unistd.h>

StandardInput::StandardInput(QObject *parent) : QObject(parent) { }

void StandardInput::start()
{
    m_notifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &StandardInput::read);
}

void StandardInput::read()
{
    std::array<char, 4096> buffer = {};
    const ssize_t size = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (size > 0) {
        m_pending.append(buffer.data(), int(size));
        takeLines();
        return;
    }
    m_notifier->setEnabled(false);
    if (isatty(STDIN_FILENO))
        emit endedByUser();
}

void StandardInput::takeLines()
{
    for (int end = m_pending.indexOf('\n'); end >= 0; end = m_pending.indexOf('\n')) {
        const QString line = QString::fromUtf8(m_pending.left(end));
        m_pending.remove(0, end + 1);
        emit lineRead(line);
    }
}
