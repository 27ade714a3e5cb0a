// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "capture/capturereader.h"

#include <algorithm>
#include <cstring>

static constexpr std::uint32_t pcapMicroseconds = 0xa1b2c3d4;
static constexpr std::uint32_t pcapNanoseconds = 0xa1b23c4d;
static constexpr std::uint32_t sectionHeader = 0x0a0d0d0a;
static constexpr std::uint32_t byteOrder = 0x1a2b3c4d;
static constexpr std::uint32_t interfaceBlock = 1;
static constexpr std::uint32_t packetBlock = 6;
static constexpr std::uint32_t linkOfBus = 231;
static constexpr unsigned timeResolution = 9; // an option of an interface
// What a bus carries at most, and some more for a block's own fields.
static constexpr std::size_t largest = 134217728 + 4096;

static std::uint32_t swapped(std::uint32_t raw)
{
    return (raw >> 24) | ((raw >> 8) & 0xff00U) | ((raw << 8) & 0xff0000U) | (raw << 24);
}

bool CaptureReader::fail(const std::string &error)
{
    m_error = error;
    return false;
}

bool CaptureReader::read(void *data, std::size_t size)
{
    if (std::fread(data, 1, size, m_file) == size)
        return true;
    return fail(std::ferror(m_file) ? "the file cannot be read" : "the file ends in the middle of a message");
}

// Grows with what is really there: a length in a file may be a lie.
bool CaptureReader::readBytes(std::vector<unsigned char> *bytes, std::size_t size)
{
    constexpr std::size_t step = 1 << 20;
    if (size > largest)
        return fail("it claims a message of " + std::to_string(size) + " bytes, more than a bus carries");
    bytes->clear();
    while (bytes->size() < size) {
        const std::size_t before = bytes->size();
        bytes->resize(std::min(size, before + step));
        if (!read(bytes->data() + before, bytes->size() - before))
            return false;
    }
    return true;
}

std::uint32_t CaptureReader::number(std::uint32_t raw) const { return m_isSwapped ? swapped(raw) : raw; }

std::uint32_t CaptureReader::at(std::size_t offset) const
{
    std::uint32_t raw = 0;
    if (offset + sizeof raw <= m_block.size())
        std::memcpy(&raw, m_block.data() + offset, sizeof raw);
    return number(raw);
}

unsigned CaptureReader::shortAt(std::size_t offset) const
{
    if (offset + 2 > m_block.size())
        return 0;
    const unsigned first = m_block[offset];
    const unsigned second = m_block[offset + 1];
    return m_isSwapped ? first << 8 | second : second << 8 | first;
}

bool CaptureReader::next(Packet *packet)
{
    if (!m_error.empty() || (m_format == Format::Unknown && !begin()))
        return false;
    if (m_format == Format::Pcap)
        return nextPcap(packet);
    bool isPacket = false;
    while (!isPacket) {
        if (!nextBlock(packet, &isPacket))
            return false;
    }
    return true;
}

bool CaptureReader::begin()
{
    std::uint32_t magic = 0;
    if (std::fread(&magic, 1, sizeof magic, m_file) != sizeof magic)
        return fail("it is no capture: neither pcap nor pcapng");
    if (magic != sectionHeader)
        return beginPcap(magic);
    m_format = Format::Pcapng;
    return beginSection();
}

bool CaptureReader::beginPcap(std::uint32_t magic)
{
    for (const bool isSwapped : {false, true}) {
        m_isSwapped = isSwapped;
        m_isNanoseconds = number(magic) == pcapNanoseconds;
        if (number(magic) != pcapMicroseconds && !m_isNanoseconds)
            continue;
        m_format = Format::Pcap;
        if (!readBytes(&m_block, 20))
            return fail("the file ends in its header");
        // The upper bits tell of things that a bus does not have.
        const std::uint32_t link = at(16) & 0xffffU;
        return link == linkOfBus
            || fail("its messages are of link type " + std::to_string(link) + ", not of D-Bus (231)");
    }
    return fail("it is no capture: neither pcap nor pcapng");
}

bool CaptureReader::nextPcap(Packet *packet)
{
    const int first = std::fgetc(m_file);
    if (first == EOF)
        return std::ferror(m_file) ? fail("the file cannot be read") : false;
    m_block.assign(16, 0);
    m_block[0] = static_cast<unsigned char>(first);
    if (!read(m_block.data() + 1, 15))
        return false;
    packet->time = static_cast<Time>(at(0)) * 1000000 + (m_isNanoseconds ? at(4) / 1000 : at(4));
    packet->number = ++m_count;
    return readBytes(&packet->bytes, at(8));
}

// Behind the type of the block, which has been read.
bool CaptureReader::beginSection()
{
    std::uint32_t head[2] = {};
    if (!read(head, sizeof head))
        return fail("the file ends in its header");
    m_isSwapped = head[1] != byteOrder;
    if (number(head[1]) != byteOrder)
        return fail("it is no capture: its section has no byte order");
    const std::uint32_t length = number(head[0]);
    m_interfaces.clear();
    return length >= 28 ? readBytes(&m_block, length - 12) : fail("its section is shorter than its own header");
}

bool CaptureReader::nextBlock(Packet *packet, bool *isPacket)
{
    const int first = std::fgetc(m_file);
    if (first == EOF)
        return std::ferror(m_file) ? fail("the file cannot be read") : false;
    unsigned char head[8] = {static_cast<unsigned char>(first)};
    if (!read(head + 1, 3))
        return false;
    std::uint32_t type = 0;
    std::memcpy(&type, head, sizeof type);
    if (type == sectionHeader)
        return beginSection();
    if (!read(head + 4, 4))
        return false;
    std::uint32_t length = 0;
    std::memcpy(&length, head + 4, sizeof length);
    length = number(length);
    if (length < 12 || length % 4 != 0)
        return fail("a block has the impossible length " + std::to_string(length));
    if (!readBytes(&m_block, length - 8))
        return false;
    m_block.resize(m_block.size() - 4);
    if (number(type) == interfaceBlock)
        addInterface();
    *isPacket = number(type) == packetBlock && takePacket(packet);
    return m_error.empty();
}

void CaptureReader::addInterface()
{
    Interface added;
    added.isBus = shortAt(0) == linkOfBus;
    for (std::size_t offset = 8; offset + 4 <= m_block.size();) {
        const unsigned code = shortAt(offset);
        const unsigned size = shortAt(offset + 2);
        if (code == timeResolution && size == 1 && offset + 4 < m_block.size()) {
            const unsigned value = m_block[offset + 4];
            added.perSecond = 1;
            for (unsigned i = 0; i < std::min(value & 0x7fU, 9U); ++i)
                added.perSecond *= value & 0x80U ? 2 : 10;
        }
        if (code == 0)
            break;
        offset += 4 + (size + 3) / 4 * 4;
    }
    m_interfaces.push_back(added);
}

// False for one that is of another link than D-Bus: such packets are passed over.
bool CaptureReader::takePacket(Packet *packet)
{
    const std::uint32_t which = at(0);
    const std::size_t size = at(12);
    if (m_block.size() < 20 || size > m_block.size() - 20)
        return fail("a packet is longer than its block");
    if (which >= m_interfaces.size())
        return fail("a packet is of an interface that the file has not");
    const Interface &interface = m_interfaces[which];
    if (!interface.isBus)
        return false;
    const std::uint64_t ticks = static_cast<std::uint64_t>(at(4)) << 32 | at(8);
    const std::uint64_t seconds = ticks / interface.perSecond;
    const std::uint64_t rest = ticks % interface.perSecond;
    packet->time = static_cast<Time>((seconds % 100000000000ULL) * 1000000 + rest * 1000000 / interface.perSecond);
    packet->number = ++m_count;
    packet->bytes.assign(m_block.begin() + 20, m_block.begin() + 20 + static_cast<std::ptrdiff_t>(size));
    return true;
}
