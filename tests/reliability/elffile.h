#pragma once

// Just enough of the ELF format to find where a plugin keeps its metadata, so that the
// tests can damage a plugin file at that place whatever the compiler and linker made
// of it. 64-bit little-endian files only, which is what this platform builds.

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QtEndian>

#include <cstring>

namespace ZelvaneReliability {

struct ElfSection
{
    qint64 offset = -1;
    qint64 size = 0;
};

namespace Elf {
constexpr int classOffset = 4; // e_ident[EI_CLASS]: 1 is 32-bit, 2 is 64-bit
constexpr int machineOffset = 18; // e_machine, two bytes
} // namespace Elf

template<typename T>
T readLittleEndian(const QByteArray& data, qint64 offset)
{
    if (offset < 0 || offset + qint64(sizeof(T)) > data.size())
        return 0;
    return qFromLittleEndian<T>(data.constData() + offset);
}

// The file offset and size of the section called name, or offset -1 if there is none.
inline ElfSection findSection(const QByteArray& data, const char* name)
{
    if (!data.startsWith("\x7f"
                         "ELF")
        || data.size() < 64 || data.at(Elf::classOffset) != 2)
        return {};
    const auto sectionTable = qint64(readLittleEndian<quint64>(data, 0x28));
    const qint64 entrySize = readLittleEndian<quint16>(data, 0x3a);
    const qint64 count = readLittleEndian<quint16>(data, 0x3c);
    const qint64 namesIndex = readLittleEndian<quint16>(data, 0x3e);
    const auto section = [&](qint64 index, qint64 field) {
        return sectionTable + index * entrySize + field;
    };
    const auto names = qint64(readLittleEndian<quint64>(data, section(namesIndex, 0x18)));
    for (qint64 i = 0; i < count; ++i) {
        const qint64 nameOffset = names + readLittleEndian<quint32>(data, section(i, 0));
        if (nameOffset < 0 || nameOffset >= data.size())
            continue;
        if (std::strncmp(data.constData() + nameOffset, name, size_t(data.size() - nameOffset))
            != 0)
            continue;
        return ElfSection { qint64(readLittleEndian<quint64>(data, section(i, 0x18))),
                            qint64(readLittleEndian<quint64>(data, section(i, 0x20))) };
    }
    return {};
}

// Where the last loadable segment of the file ends: the dynamic loader maps the file up
// to here, and only section headers and the like follow. -1 for a file without any.
inline qint64 loadedSize(const QByteArray& data)
{
    if (!data.startsWith("\x7f"
                         "ELF")
        || data.size() < 64 || data.at(Elf::classOffset) != 2)
        return -1;
    const auto table = qint64(readLittleEndian<quint64>(data, 0x20));
    const qint64 entrySize = readLittleEndian<quint16>(data, 0x36);
    const qint64 count = readLittleEndian<quint16>(data, 0x38);
    qint64 end = -1;
    for (qint64 i = 0; i < count; ++i) {
        const qint64 entry = table + i * entrySize;
        if (readLittleEndian<quint32>(data, entry) != 1) // PT_LOAD
            continue;
        end = qMax(end,
                   qint64(readLittleEndian<quint64>(data, entry + 0x08)
                          + readLittleEndian<quint64>(data, entry + 0x20)));
    }
    return end;
}

} // namespace ZelvaneReliability
