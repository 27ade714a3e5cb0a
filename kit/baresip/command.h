// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef BARESIP_COMMAND_H
#define BARESIP_COMMAND_H

#include <QtCore/QString>
#include <QtCore/QVector>
#include <functional>

/** A command of baresip's menu. */
struct Command
{
    QString name;
    QString parameter;
    /** How the answer begins if the commands behind it make sense; empty for any answer. */
    QString expected;
};

/** Its answer. */
struct Reply
{
    bool isOk = false;
    QString text;
};

/** Commands that belong together, with no other command between them. */
struct CommandSequence
{
    enum class Pace {
        /** Each is sent when the one before it has been answered as expected. */
        OneByOne,
        /**
         * All are sent at once, so that baresip handles them in one go, and nobody else's key finds another
         * call or account selected meanwhile. For commands that select and ask, and do no more.
         */
        Together
    };

    /** What became of it. */
    struct Result
    {
        /** One for each command that was sent. */
        QVector<Reply> replies;
        /** Whether all commands were sent, and answered as expected. */
        bool isComplete = false;
        /** Whether baresip may have chosen another current call while the last command was on its way. */
        bool isDisturbed = false;
    };

    QVector<Command> commands;
    /** Not called when the connection is lost meanwhile. */
    std::function<void(const Result &)> done;
    Pace pace = Pace::OneByOne;
};

#endif
