// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef SIMULATOR_CALL_H
#define SIMULATOR_CALL_H

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <optional>

/** What stays the same for as long as a call lives. */
struct CallDescription
{
    /** By which commands and events name it; the last element of its object path. */
    QString name;
    QString address;
    QString remoteName;
    /** Path of the call manager that it belongs to; empty for the first one. */
    QString manager;
    bool incoming = true;
    bool holdable = true;
    bool tones = true;
    bool audio = true;
};

struct AudioRoute
{
    bool muted = false;
    QString input;
    QString output;
};

/**
 * A call as the application sees it. It knows nothing of the bus: whoever carries it there follows the
 * signals.
 */
class Call : public QObject
{
    Q_OBJECT
public:
    /** What became of something that was asked of the call. */
    enum class Outcome {
        Done,
        /** It is so already; nothing was sent. */
        Unchanged,
        /** The call is in no state, or not of a kind, for which it makes sense; nothing was sent. */
        Impossible,
        /** The host would not hear it: it has not told this call of its audio yet. Nothing was sent. */
        TooEarly
    };

    explicit Call(const CallDescription &description, QObject *parent = nullptr);

    const CallDescription &description() const { return m_description; }
    QString name() const { return m_description.name; }
    uint status() const { return m_status; }

    /** Changes the status; `status` is below CallStatus::Count. A disconnected call stays until end(). */
    Outcome setStatus(uint status);

    /** The host, or a user at the application, answers an incoming call. */
    Outcome accept();

    /** Somebody answers: the user here when the call is incoming, the far end when it is dialing. */
    Outcome answer();

    Outcome setHold(bool hold);

    void addTones(const QString &tones) { m_tones += tones; }

    /** All tones that the host has asked for so far. */
    QString tones() const { return m_tones; }

    /** Disconnects the call unless it is, and gives it up. */
    void end();

    // --- Audio; the host's state is unknown until it has sent it.

    std::optional<AudioRoute> audioRoute() const { return m_audioRoute; }
    QStringList audioDevices() const { return m_audioDevices; }

    void setAudioState(const QStringList &devices, const AudioRoute &route);
    void setAudioRoute(const AudioRoute &route);

    /** The host that sent it has gone. */
    void forgetAudio();

    Outcome askForMute(bool mute);
    Outcome askForRoute(const QString &input, const QString &output);

    /** Whether the host has told that it shows this call. */
    bool isShown() const { return m_shown; }
    void setShown(bool shown) { m_shown = shown; }

Q_SIGNALS:
    void statusChanged(uint status);
    void muteRequested(bool mute);
    void routeRequested(const QString &input, const QString &output);

    /** After the last statusChanged(). */
    void ended();

private:
    bool means(uint status) const;
    bool hasRoute(const QString &input, const QString &output) const;

    const CallDescription m_description;
    uint m_status;
    QString m_tones;
    std::optional<AudioRoute> m_audioRoute;
    QStringList m_audioDevices;
    bool m_shown = false;
};

#endif
