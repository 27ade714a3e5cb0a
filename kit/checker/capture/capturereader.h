// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#ifndef KIT_CHECKER_CAPTUREREADER_H
#define KIT_CHECKER_CAPTUREREADER_H

#include "analysis/message.h"

#include <cstdio>
#include <string>
#include <vector>

/**
 * Reads D-Bus messages out of a pcap or pcapng file, one after the other. Believes nothing that the file says of
 * itself: a length is at most what a bus carries, and an end in the middle is an error.
 */
class CaptureReader
{
public:
    /** Reads the file from where it stands, and leaves it open. */
    explicit CaptureReader(std::FILE *file) : m_file(file) { }

    struct Packet
    {
        Time time = 0;
        std::uint64_t number = 0; // counted from 1
        std::vector<unsigned char> bytes;
    };

    /** Puts the next one into `packet`; false at the end, and where the file cannot be read further. */
    bool next(Packet *packet);

    /** Why it cannot be read further; empty at a proper end. */
    const std::string &error() const { return m_error; }

private:
    enum class Format { Unknown, Pcap, Pcapng };
    struct Interface
    {
        bool isBus = false;
        std::uint64_t perSecond = 1000000;
    };

    bool begin();
    bool beginPcap(std::uint32_t magic);
    bool nextPcap(Packet *packet);
    bool nextBlock(Packet *packet, bool *isPacket);
    bool beginSection();
    void addInterface();
    bool takePacket(Packet *packet);
    bool read(void *data, std::size_t size);
    bool readBytes(std::vector<unsigned char> *bytes, std::size_t size);
    bool fail(const std::string &error);
    std::uint32_t number(std::uint32_t raw) const;
    std::uint32_t at(std::size_t offset) const;
    unsigned shortAt(std::size_t offset) const;

    std::FILE *m_file = nullptr;
    Format m_format = Format::Unknown;
    bool m_isSwapped = false;
    bool m_isNanoseconds = false;
    std::uint64_t m_count = 0;
    std::vector<Interface> m_interfaces;
    std::vector<unsigned char> m_block;
    std::string m_error;
};

#endif
