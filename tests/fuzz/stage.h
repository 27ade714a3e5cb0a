// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_STAGE_H
#define TESTS_STAGE_H

#include "message.h"

#include <string>

/** Something that the host does. */
struct HostStep
{
    enum Kind {
        // To a call; `target` picks one of those that exist, removed ones included until they are deleted.
        Answer,
        Hangup,
        Hold,
        Release,
        SendDtmf,
        Deflect,
        Merge,
        Split,
        ReadCall,
        Tick, ///< a second passes for the call
        StrayTick, ///< a timer fires that is not the call's
        // To a provider.
        Dial,
        ReadProvider,
        // To the audio; `text` is a device id.
        ChangeDevices,
        SelectInput,
        SelectOutput,
        ToggleMute,
        // To itself: the step that the host takes from inside whatever it is told of a call next.
        React,
        // To the plug-in.
        Initialize,
        Configure,
        ConfigureWithoutHost,
        Idle, ///< start, suspend, resume and finalize, which change nothing
        Reload ///< deletes the plug-in and makes a new one
    };

    Kind kind;
    unsigned target = 0;
    std::string text = {};
};

/** What the plug-in asks the bus daemon for. */
enum class Query { ProcessId, NameOwner };

/** How the bus daemon answers. */
enum class Answer {
    Plain,
    Error,
    WrongType,
    Twice,
    Odd, ///< a value at the end of the type's range
    Late, ///< behind a signal that came in between
    Departure ///< the one asked about leaves, and the answer is an error
};

/**
 * Where an input is played: a bus with the plug-in at its one end and applications, which send what they like,
 * at the other. Applications are numbered from 0; each is on the bus from its first message on, under a unique
 * name that nobody had before, and again under a new one after it has left.
 */
class Stage
{
public:
    virtual ~Stage() = default;

    /** A bus name of the host. */
    virtual std::string hostName() const = 0;

    virtual std::string name(int application) = 0;

    virtual void send(int application, Message message) = 0;

    /** The oldest call to the application that was not taken yet, after settling; null when there is none. */
    virtual Message takeRequest(int application) = 0;

    virtual void leave(int application) = 0;

    /** Returns when the host has handled all that was sent. */
    virtual void settle() = 0;

    virtual void act(const HostStep &step) = 0;

    // What only the bus daemon does. On a real bus, which does none of it by request, nothing happens.
    virtual void announceOwner(const std::string &name, const std::string &before, const std::string &after) = 0;
    virtual void distort(Query query, Answer answer) = 0;
};

#endif
