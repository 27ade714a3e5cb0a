// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef CALLCTL_KEYBOARD_H
#define CALLCTL_KEYBOARD_H

#include <QtCore/QObject>
#include <memory>

/**
 * Keys that are typed at the terminal, each at once and without echo. The terminal is as before when the object
 * goes. A program in the background leaves it alone.
 */
class Keyboard : public QObject
{
    Q_OBJECT

public:
    enum class Special { Up = -1, Down = -2 };

    Keyboard();
    ~Keyboard() override;

    /** Whether there is a terminal to type at. */
    static bool isThere();

    /** Gives the terminal back, before the process stops. */
    void release();

    /** Takes it again, if the process is in the foreground. */
    void take();

Q_SIGNALS:
    /** A character, or one of the special ones. */
    void pressed(int key);

private:
    void readKeys();
    void takeByte(char byte);

    struct Private;
    std::unique_ptr<Private> d;
};

#endif
