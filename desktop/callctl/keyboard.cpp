// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "keyboard.h"

#include <QtCore/QSocketNotifier>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

// What was read last.
enum class Part { None, Escape, Sequence };

struct Keyboard::Private
{
    QSocketNotifier notifier{STDIN_FILENO, QSocketNotifier::Read};
    termios before = {};
    bool isTaken = false;
    Part part = Part::None;
};

bool Keyboard::isThere() { return isatty(STDIN_FILENO); }

Keyboard::Keyboard() : d(std::make_unique<Private>())
{
    connect(&d->notifier, &QSocketNotifier::activated, this, &Keyboard::readKeys);
    d->notifier.setEnabled(false);
    take();
}

Keyboard::~Keyboard() { release(); }

// Without waiting for the output to drain: it may stand still.
void Keyboard::take()
{
    if (d->isTaken || tcgetpgrp(STDIN_FILENO) != getpgrp() || tcgetattr(STDIN_FILENO, &d->before) < 0)
        return;
    termios silent = d->before;
    silent.c_lflag &= ~tcflag_t(ECHO | ICANON);
    // Ctrl-C drops what was typed, perhaps between the moment it was seen and that of reading.
    silent.c_cc[VMIN] = 0;
    silent.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &silent);
    d->isTaken = true;
    d->notifier.setEnabled(true);
}

void Keyboard::release()
{
    if (!d->isTaken)
        return;
    d->notifier.setEnabled(false);
    d->isTaken = false;
    // What was typed ahead was not meant for the shell.
    tcflush(STDIN_FILENO, TCIFLUSH);
    tcsetattr(STDIN_FILENO, TCSANOW, &d->before);
}

static bool isHungUp()
{
    pollfd terminal = {STDIN_FILENO, POLLIN, 0};
    return poll(&terminal, 1, 0) > 0 && (terminal.revents & (POLLHUP | POLLERR | POLLNVAL));
}

void Keyboard::readKeys()
{
    char buffer[64];
    const ssize_t count = read(STDIN_FILENO, buffer, sizeof buffer);
    if (count < 0 || (count == 0 && isHungUp()))
        return d->notifier.setEnabled(false);
    for (ssize_t i = 0; i < count; ++i)
        takeByte(buffer[i]);
}

// Keys that are no character send several bytes, perhaps together with the next key; two of them are known.
void Keyboard::takeByte(char byte)
{
    const bool isIntroducer = d->part == Part::Escape && (byte == '[' || byte == 'O');
    const bool isFinal = d->part == Part::Sequence && byte >= '@' && byte <= '~';
    if (byte == '\033') {
        d->part = Part::Escape;
    } else if (isIntroducer) {
        d->part = Part::Sequence;
    } else if (isFinal) {
        d->part = Part::None;
        if (byte == 'A' || byte == 'B')
            emit pressed(int(byte == 'A' ? Special::Up : Special::Down));
    } else if (d->part == Part::Escape) {
        d->part = Part::None;
    } else if (d->part == Part::None) {
        emit pressed(static_cast<unsigned char>(byte));
    }
}
