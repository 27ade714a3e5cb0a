// SPDX-FileCopyrightText: 2026 The Ringlet Authors
// SPDX-License-Identifier: BSD-3-Clause

#include "valuewriter.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <vector>

namespace {

// Containers inside one another that the bus takes, variants counted.
constexpr int maximumDepth = 64;
constexpr int maximumSignature = 255;
// Descriptors in one message that the bus takes, unless it is told otherwise.
constexpr int maximumDescriptors = 16;
constexpr int maximumValues = 20000;

constexpr const char *basicTypes[] = {"u", "s", "b", "i", "y", "o", "d", "x", "t", "n", "q", "g", "h"};

// Types that code is likely to treat in a way of its own.
constexpr const char *usualTypes[] = {"v", "as", "a{sv}", "a{sa{sv}}", "a{oa{sa{sv}}}", "a(so)", "ay", "av", "ah",
    "a{sh}", "(h)", "a{sv}", "aah", "(sv)", "a{s(hv)}", "a{iv}", "ai", "(iii)", "aav", "a{o(av)}", "a(hv)", "ag", "at"};

constexpr const char *usualTexts[] = {"", "Alice", "sip:alice@example.org", "5", "true", "yes", "0", "-1", "1e9", "%1",
    "%s%n", "/", "/m/c1", ":1.1", "zelkovar.Call.Call1", "\x01\x02\x7f", "\xEF\xBF\xBF", "\xF4\x8F\xBF\xBF",
    "\xE2\x80\xAEtxt", "e\xCC\x81", "\xEF\xBB\xBF", "a\nb\tc", "<&>\"'", "\xED\x9F\xBF", "4294967296"};

constexpr const char *usualPaths[] = {"/m", "/m/c1", "/m/c2", "/", "/c", "/zelkovar/call/service",
    "/org/freedesktop/DBus", "/org/freedesktop/DBus/Local", "/_/A/9"};

constexpr const char *usualSignatures[] = {"", "s", "a{sv}", "aaaaaa(yv)", "vvvv"};

int levels(DBusSignatureIter *type)
{
    const int kind = dbus_signature_iter_get_current_type(type);
    if (kind == DBUS_TYPE_VARIANT)
        return 1;
    if (!dbus_type_is_container(kind))
        return 0;
    DBusSignatureIter inner;
    dbus_signature_iter_recurse(type, &inner);
    int deepest = 0;
    do {
        deepest = std::max(deepest, levels(&inner));
    } while (kind != DBUS_TYPE_ARRAY && dbus_signature_iter_next(&inner));
    return 1 + deepest;
}

int levels(const std::string &type)
{
    DBusSignatureIter iter;
    dbus_signature_iter_init(&iter, type.c_str());
    return levels(&iter);
}

std::string signatureOf(DBusSignatureIter *type)
{
    char *signature = dbus_signature_iter_get_signature(type);
    std::string copy = signature;
    dbus_free(signature);
    return copy;
}

int descriptorsIn(const std::string &signature) { return int(std::count(signature.begin(), signature.end(), 'h')); }

std::string repeated(const char *part, unsigned times)
{
    std::string text;
    for (unsigned i = 0; i < times; ++i)
        text += part;
    return text;
}

// Opened before anybody counts descriptors.
const int nullDevice = open("/dev/null", O_RDWR | O_CLOEXEC);

void appendCodePoint(std::string &text, unsigned code)
{
    const bool isSurrogate = code >= 0xD800 && code < 0xE000;
    if (code == 0 || isSurrogate || code > 0x10FFFF)
        text += '?';
    else if (code < 0x80)
        text += char(code);
    else if (code < 0x800)
        text.append({char(0xC0 | code >> 6), char(0x80 | (code & 0x3F))});
    else if (code < 0x10000)
        text.append({char(0xE0 | code >> 12), char(0x80 | (code >> 6 & 0x3F)), char(0x80 | (code & 0x3F))});
    else
        text.append({char(0xF0 | code >> 18), char(0x80 | (code >> 12 & 0x3F)), char(0x80 | (code >> 6 & 0x3F)),
            char(0x80 | (code & 0x3F))});
}

} // namespace

// --- Choosing

void ValueWriter::startMessage()
{
    m_budget = maximumValues;
    m_descriptors = maximumDescriptors;
}

/** The type if the message has room for a value of it, otherwise a plain one. Room for descriptors is taken. */
std::string ValueWriter::affordable(const std::string &type, int depth)
{
    const int descriptors = descriptorsIn(type);
    if (descriptors > m_descriptors || depth + levels(type) > maximumDepth)
        return "u";
    m_descriptors -= descriptors;
    return type;
}

/** How many elements an array gets: mostly few. Room for the descriptors of one is taken already. */
int ValueWriter::elements(const std::string &type)
{
    int count = std::min(int(m_bytes.oneIn(64) ? m_bytes.below(2000) : m_bytes.below(4)), std::max(m_budget, 0));
    const int descriptors = descriptorsIn(type);
    if (descriptors > 0 && count > 1) {
        count = std::min(count, 1 + m_descriptors / descriptors);
        m_descriptors -= (count - 1) * descriptors;
    }
    return count;
}

std::string ValueWriter::type()
{
    switch (m_bytes.below(8)) {
    case 3:
    case 4:
        return m_bytes.oneOf(usualTypes);
    case 5:
        return builtType(3);
    case 6:
        m_variantsToNest = m_bytes.below(maximumDepth);
        return "v";
    case 7:
        return deepType();
    default:
        return m_bytes.oneOf(basicTypes);
    }
}

/** One container in the other, up to the 32 of a kind that a signature can hold. */
std::string ValueWriter::deepType()
{
    const unsigned depth = 1 + m_bytes.below(32);
    const std::string inner = m_bytes.oneOf(basicTypes);
    switch (m_bytes.below(3)) {
    case 0:
        return repeated("a", depth) + inner;
    case 1:
        return repeated("(", depth) + inner + repeated(")", depth);
    default:
        return repeated("a{s", depth) + inner + repeated("}", depth);
    }
}

std::string ValueWriter::builtType(int levels)
{
    if (levels == 0)
        return m_bytes.oneIn(4) ? "v" : m_bytes.oneOf(basicTypes);
    switch (m_bytes.below(4)) {
    case 0:
        return builtType(0);
    case 1:
        return "a" + builtType(levels - 1);
    case 2:
        return std::string("a{") + m_bytes.oneOf(basicTypes) + builtType(levels - 1) + "}";
    default: {
        std::string members = builtType(levels - 1);
        for (unsigned further = m_bytes.below(3); further > 0; --further)
            members += builtType(levels - 1);
        return "(" + members + ")";
    }
    }
}

std::string ValueWriter::typeInVariant()
{
    if (m_variantsToNest == 0)
        return type();
    --m_variantsToNest;
    return "v";
}

std::string ValueWriter::text() { return m_bytes.oneIn(4) ? builtText() : m_bytes.oneOf(usualTexts); }

std::string ValueWriter::builtText()
{
    std::string text;
    if (m_bytes.oneIn(16))
        return text.assign(m_bytes.number(2), 'x');
    for (unsigned length = m_bytes.below(16); length > 0; --length)
        appendCodePoint(text, unsigned(m_bytes.number(m_bytes.oneIn(4) ? 3 : 1)));
    return text;
}

std::string ValueWriter::path()
{
    if (!m_bytes.oneIn(16))
        return m_bytes.oneOf(usualPaths);
    return "/" + std::string(1 + m_bytes.number(2), 'p');
}

// --- Writing

void ValueWriter::appendArguments(DBusMessage *message)
{
    // libdbus does not look at the length of the whole, and fails when it is too great.
    const std::size_t there = std::strlen(dbus_message_get_signature(message));
    std::string signature;
    for (unsigned count = m_bytes.oneIn(16) ? m_bytes.below(40) : m_bytes.below(4); count > 0; --count) {
        const std::string next = affordable(type(), 0);
        if (there + signature.size() + next.size() <= maximumSignature)
            signature += next;
    }
    appendArguments(message, signature);
}

void ValueWriter::appendArguments(DBusMessage *message, const std::string &signature)
{
    if (signature.empty())
        return;
    DBusMessageIter to;
    dbus_message_iter_init_append(message, &to);
    DBusSignatureIter type;
    dbus_signature_iter_init(&type, signature.c_str());
    do {
        write(&to, &type, 0);
    } while (dbus_signature_iter_next(&type));
}

void ValueWriter::writeVariant(DBusMessageIter *to, const std::string &wanted, int depth)
{
    const std::string type = affordable(wanted, depth + 1);
    appendContainer(
        to, DBUS_TYPE_VARIANT, type.c_str(), [&](DBusMessageIter *inner) { write(inner, type, depth + 1); });
}

void ValueWriter::write(DBusMessageIter *to, const std::string &type, int depth)
{
    DBusSignatureIter iter;
    dbus_signature_iter_init(&iter, type.c_str());
    write(to, &iter, depth);
}

void ValueWriter::write(DBusMessageIter *to, DBusSignatureIter *type, int depth)
{
    --m_budget;
    switch (const int kind = dbus_signature_iter_get_current_type(type)) {
    case DBUS_TYPE_VARIANT:
        writeVariant(to, typeInVariant(), depth);
        break;
    case DBUS_TYPE_ARRAY:
        writeArray(to, type, depth);
        break;
    case DBUS_TYPE_STRUCT:
    case DBUS_TYPE_DICT_ENTRY:
        appendContainer(to, kind, nullptr, [=](DBusMessageIter *inner) { writeMembers(inner, type, depth + 1); });
        break;
    default:
        writeBasic(to, kind);
    }
}

void ValueWriter::writeMembers(DBusMessageIter *to, DBusSignatureIter *type, int depth)
{
    DBusSignatureIter member;
    dbus_signature_iter_recurse(type, &member);
    do {
        write(to, &member, depth);
    } while (dbus_signature_iter_next(&member));
}

void ValueWriter::writeArray(DBusMessageIter *to, DBusSignatureIter *type, int depth)
{
    DBusSignatureIter element;
    dbus_signature_iter_recurse(type, &element);
    const std::string signature = signatureOf(&element);
    appendContainer(to, DBUS_TYPE_ARRAY, signature.c_str(), [&](DBusMessageIter *inner) {
        if (signature == "y") {
            writeBytes(inner);
            return;
        }
        for (int count = elements(signature); count > 0; --count)
            write(inner, &element, depth + 1);
    });
}

void ValueWriter::writeBytes(DBusMessageIter *to)
{
    const std::size_t size = m_bytes.oneIn(16) ? 16 * m_bytes.number(2) : m_bytes.below(16);
    const std::vector<char> bytes(size + 1, char(0xFF));
    const char *data = bytes.data();
    dbus_message_iter_append_fixed_array(to, DBUS_TYPE_BYTE, &data, int(size));
}

void ValueWriter::writeBasic(DBusMessageIter *to, int type)
{
    std::string string;
    DBusBasicValue value = {};
    switch (type) {
    case DBUS_TYPE_STRING:
        string = text();
        break;
    case DBUS_TYPE_OBJECT_PATH:
        string = path();
        break;
    case DBUS_TYPE_SIGNATURE:
        string = m_bytes.oneOf(usualSignatures);
        break;
    case DBUS_TYPE_BOOLEAN:
        value.bool_val = m_bytes.byte() & 1;
        break;
    case DBUS_TYPE_UNIX_FD:
        value.fd = nullDevice;
        break;
    default:
        // Small numbers are the ones that mean something.
        value.u64 = m_bytes.oneIn(4) ? m_bytes.number(8) : m_bytes.below(10);
    }
    if (type == DBUS_TYPE_STRING || type == DBUS_TYPE_OBJECT_PATH || type == DBUS_TYPE_SIGNATURE) {
        const char *data = string.c_str();
        dbus_message_iter_append_basic(to, type, &data);
    } else {
        dbus_message_iter_append_basic(to, type, &value);
    }
}
