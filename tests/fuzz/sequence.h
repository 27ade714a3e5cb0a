// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_SEQUENCE_H
#define TESTS_SEQUENCE_H

#include "bytereader.h"
#include "stage.h"
#include "valuewriter.h"

#include <string>

/**
 * What happens in one input: applications, the host and the bus daemon take steps, one after the other, as the
 * bytes say. Most messages are nearly right, for those reach deepest.
 */
class Sequence
{
public:
    Sequence(ByteReader &bytes, Stage &stage) : m_bytes(bytes), m_values(bytes), m_stage(stage) { }

    /** Steps of all kinds, from a plug-in that was just loaded on. */
    void playCalls();

    /** One application's call, then nothing but values of all kinds in what it reports. */
    void playValues();

private:
    using Step = void (Sequence::*)();
    struct Choice
    {
        Step step;
        unsigned weight;
    };
    static const Choice choices[];
    Step chosenStep();
    void take(Step step);

    void load();

    // Applications
    void registerManager();
    void announce();
    void withdraw();
    void changeStatus();
    void requestMute();
    void requestRoute();
    void answerRequest();
    void sendOddSignal();
    void callPlugin();
    void sendStrayReply();
    void leave();

    // Host and bus daemon
    void command();
    void changeAudio();
    void control();
    void announceOwner();
    void distort();
    void settle();

    int application();
    std::string managerPath();
    std::string callPath();
    void send(int sender, Message message);
    void act(HostStep::Kind kind);
    void appendSnapshot(DBusMessage *message);
    void appendInterfaces(DBusMessageIter *to, int depth); // with so many containers open, as in the next
    void appendProperties(DBusMessageIter *to, int depth);
    void appendNames(DBusMessageIter *to);
    void appendUsualOrOdd(DBusMessage *message, const char *signature);
    const char *interfaceName();
    unsigned few(unsigned limit);

    ByteReader &m_bytes;
    ValueWriter m_values;
    Stage &m_stage;
};

#endif
