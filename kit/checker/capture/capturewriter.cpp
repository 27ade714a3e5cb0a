// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "capture/capturewriter.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

CaptureWriter::CaptureWriter(const std::string &name)
{
    const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    // A file that was there may have had other rights, and something in it.
    if (descriptor < 0 || fchmod(descriptor, 0600) != 0 || ftruncate(descriptor, 0) != 0) {
        m_error = std::strerror(errno);
        if (descriptor >= 0)
            close(descriptor);
        return;
    }
    m_file = fdopen(descriptor, "wb");
    const std::array<std::uint32_t, 6> header = {0xa1b2c3d4, 4U << 16 | 2, 0, 0, 134217728, 231};
    put(header.data(), sizeof header);
}

CaptureWriter::~CaptureWriter()
{
    if (m_file)
        std::fclose(m_file);
}

bool CaptureWriter::put(const void *data, std::size_t size)
{
    if (m_file && std::fwrite(data, 1, size, m_file) == size)
        return true;
    if (m_error.empty())
        m_error = std::strerror(errno);
    return false;
}

bool CaptureWriter::flush()
{
    if (m_file && std::fflush(m_file) == 0)
        return true;
    if (m_error.empty())
        m_error = std::strerror(errno);
    return false;
}

bool CaptureWriter::write(GDBusMessage *message, Time time)
{
    gsize size = 0;
    GError *error = nullptr;
    guchar *bytes = g_dbus_message_to_blob(message, &size, G_DBUS_CAPABILITY_FLAGS_UNIX_FD_PASSING, &error);
    if (!bytes) {
        m_error = error->message;
        g_error_free(error);
        return false;
    }
    const auto length = static_cast<std::uint32_t>(size);
    const std::array<std::uint32_t, 4> header
        = {static_cast<std::uint32_t>(time / 1000000), static_cast<std::uint32_t>(time % 1000000), length, length};
    const bool isWritten = put(header.data(), sizeof header) && put(bytes, size);
    g_free(bytes);
    return isWritten;
}
