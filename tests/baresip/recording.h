// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef TESTS_RECORDING_H
#define TESTS_RECORDING_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

/** A WAV file of one channel and 16 bits that is still being written, as it is at this moment. */
class Recording
{
public:
    /** Nothing has been recorded when there is no such file. */
    explicit Recording(const QString &fileName);

    static constexpr int samplesPerSecond = 8000;

    int size() const { return m_samples.size(); }

    /** The last samples only; all if there are fewer. */
    Recording last(int samples) const;

    /** Everything from this sample on. */
    Recording from(int sample) const;

    /** The largest amplitude, of at most 32768. */
    int peak() const;

    /** Amplitude of the tone of this frequency. */
    double tone(int hertz) const;

private:
    QVector<qint16> m_samples;
};

#endif
