// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "recording.h"

#include <QtCore/QFile>
#include <QtCore/QtEndian>
#include <QtCore/QtMath>
#include <complex>

static constexpr int headerSize = 44;

Recording::Recording(const QString &fileName)
{
    QFile file(fileName);
    if (fileName.isEmpty() || !file.open(QIODevice::ReadOnly) || !file.seek(headerSize))
        return;
    const QByteArray bytes = file.readAll();
    m_samples.resize(bytes.size() / 2);
    qFromLittleEndian<qint16>(bytes.constData(), m_samples.size(), m_samples.data());
}

Recording Recording::last(int samples) const { return from(qMax(0, size() - samples)); }

Recording Recording::from(int sample) const
{
    Recording part{QString()};
    part.m_samples = m_samples.mid(sample);
    return part;
}

int Recording::peak() const
{
    int peak = 0;
    for (const int sample : m_samples)
        peak = qMax(peak, qAbs(sample));
    return peak;
}

double Recording::tone(int hertz) const
{
    std::complex<double> sum;
    for (int i = 0; i < size(); ++i)
        sum += std::polar(double(m_samples.at(i)), 2 * M_PI * hertz * i / samplesPerSecond);
    return 2 * std::abs(sum) / qMax(1, size());
}
