// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_CAPTUREWRITER_H
#define KIT_CHECKER_CAPTUREWRITER_H

#include "analysis/message.h"

#include <cstdio>
#include <string>

/** Writes messages into a pcap file, as dbus-monitor does, that only its owner may read. */
class CaptureWriter
{
public:
    /** Makes the file, or empties the one that is there; error() tells when that failed. */
    explicit CaptureWriter(const std::string &name);
    CaptureWriter(const CaptureWriter &) = delete;
    CaptureWriter &operator=(const CaptureWriter &) = delete;
    ~CaptureWriter();

    /** False when it could not be written, which error() explains. */
    bool write(GDBusMessage *message, Time time);
    bool flush();

    const std::string &error() const { return m_error; }

private:
    bool put(const void *data, std::size_t size);

    std::FILE *m_file = nullptr;
    std::string m_error;
};

#endif
