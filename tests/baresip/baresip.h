// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_BARESIP_H
#define TESTS_BARESIP_H

#include "baresipcontrol.h"
#include "program.h"
#include "recording.h"

#include <QtCore/QTemporaryDir>

/**
 * A baresip of the test's own: its own configuration, ports of the loopback interface only, no audio
 * hardware. It sends a tone, and records what it receives until the first hold.
 */
class Baresip
{
public:
    struct Settings
    {
        /** Of its SIP address. */
        QString user;
        /** As callers see it. */
        QString name;
        quint16 sipPort = 0;
        quint16 controlPort = 0;
        /** Where it takes what is typed at its keyboard. */
        quint16 keyboardPort = 0;
        /** The first of a range. */
        quint16 rtpPort = 0;
        int rtpPorts = 0;
        /** Frequency of the tone that it sends. */
        int toneHertz = 0;
        /** Of further accounts. */
        QStringList otherUsers;
    };

    /** Who has the connection to ctrl_tcp; there is only one at a time. */
    enum class ControlledBy { Test, Bridge };

    explicit Baresip(const Settings &settings);
    ~Baresip();

    /** Returns when it is ready to be called and controlled; false when it did not come up. */
    bool start(ControlledBy controlledBy);

    /** Ends it at once, without a word to anybody. */
    void kill();

    /** How others call it. */
    QString address() const { return addressOf(m_settings.user); }
    QString addressOf(const QString &user) const;
    quint16 controlPort() const { return m_settings.controlPort; }

    /** Types a command at its keyboard. */
    void type(const QString &command) const;

    /** Types a command, and returns what is printed when that contains `expected`; empty if it never does. */
    QString typeAndRead(const QString &command, const QString &expected) const;

    // --- Only when it is controlled by the test

    /** The text that it answers. */
    QString ask(const QString &command, const QString &parameter = {});

    /** What it has told of its calls so far, as "TYPE parameter". */
    QStringList events() const { return m_events; }
    /** Waits until an event that begins so has come. */
    bool waitForEvent(const QString &text) const;

    /** The stream of its current call. */
    struct Stream
    {
        int sent = 0;
        int received = 0;
        /** "sendrecv", "sendonly", "recvonly" or "inactive", from its point of view. */
        QString direction;
        /** How much its microphone has recorded, sent or not. */
        double seconds = 0;
    };
    Stream stream();

    /** Waits until it has sent and received this many packets more. */
    bool waitForPackets(int count);

    /** Waits until no packet comes or goes while its microphone records half a second. */
    bool waitForStandstill();

    // --- What it hears

    /** What it has received in its latest call, decoded. */
    Recording recording() const { return Recording(recordingFile()); }

    /** Waits until it hears the tone of this frequency, and no other, for a tenth of a second from now on. */
    bool waitForTone(int hertz) const;

    /** Waits until sound comes that is silence, for a quarter of a second from now on. */
    bool waitForSilence() const;

    /** What it has printed. */
    QString log() { return m_program.lines().join(QLatin1Char('\n')) + m_program.errorOutput(); }

private:
    bool writeConfiguration() const;
    bool write(const QString &fileName, const QString &text) const;
    /** Of the latest call; empty when there is none. */
    QString recordingFile() const;
    /** Waits until the condition holds of the last sound, of this length and from now on. */
    template <typename Condition>
    bool waitForSound(int samples, Condition condition) const;

    const Settings m_settings;
    QTemporaryDir m_directory;
    Program m_program;
    BaresipControl m_control;
    QStringList m_events;
};

#endif
