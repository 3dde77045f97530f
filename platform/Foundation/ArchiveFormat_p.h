#pragma once

#include <cstddef>

#include <ToviFoundationKit/Foundation/NSCoder.h>
#include <ToviFoundationKit/Foundation/NSData.h>

namespace tovi::detail {

// What an archive looks like. Numbers are varints: 7 bits a byte, the lowest first, the top bit set in all but the last
// byte; signed ones are zigzag-coded before. Reals are 8 bytes (f: 4), little endian.
//
//     archive    "ToviArch", version (a byte), form (a byte), number of names, names, number of records, records
//     name       text: the name of a class, or a key; later on meant by its index from 0
//     text       twice the number of UTF-16 units, plus 1 if a unit takes 2 bytes, plus 0 if 1; the units
//     record     tag (a byte), content; an object each, the root first
//     reference  the number of a record, counted from 1; 0 is nil
//
//     0                      NSNull
//     t  T                   text; capital letters are the mutable forms, here and below
//     c s i l q  C S I L Q   NSNumber of that type: a signed, unsigned varint
//     f  d                   NSNumber of that type: a real
//     P Z R                  NSValue: the 2, 2, 4 reals of a point, size, rectangle
//     r                      NSValue: location and length of a range
//     b  B                   data: number of bytes, bytes
//     m                      date: seconds since the reference date, a real
//     x  X                   index set: number of runs, of each the distance from the end of the last one, the length
//     a  A                   list: number of elements, references
//     u  U                   set: the same
//     h  H                   dictionary: number of entries, of each the references of key and value
//     k                      class object: index of its name
//     o                      any other object: index of its class's name, fields
//
//     fields     keyed: each 4 x (index of the key + 1) + kind, value; 0 at the end. The kinds are 0 a reference, 1 a
//                signed number, 2 a real, 3 a truth value (a byte).
//                unkeyed: each a reference + 1; 0 at the end

inline constexpr std::string_view archiveMagic = "ToviArch";
inline constexpr unsigned char archiveVersion = 1;
enum class ArchiveForm : char { Keyed = 'k', Unkeyed = 'u' };
enum class FieldKind : unsigned char { Object, Integer, Double, Bool };

/// The tag of objects of exactly that class, 'o' where it is none that archives know: 'd' for all numbers, 'R' for all
/// other values.
char archiveTag(const Class& exact) noexcept;

/// Why an archive is not read.
struct ArchiveFault {
    ArchiveError code;
    Ref<NSString> text;
};

/// Reads the parts of an archive one after the other; throws ArchiveFault where they are not there.
class ArchiveBytes {
public:
    explicit ArchiveBytes(NSData::Bytes bytes, std::size_t position = 0) noexcept
        : bytes_(bytes), position_(position) {}

    std::size_t position() const noexcept { return position_; }
    std::size_t left() const noexcept { return bytes_.size() - position_; }

    unsigned char byte() {
        if (position_ == bytes_.size()) [[unlikely]]
            fail(u"the archive is cut off");
        return std::to_integer<unsigned char>(bytes_[position_++]);
    }
    NSUInteger number() {
        const unsigned char first = byte();
        return first < 0x80 ? first : longNumber(first);
    }
    NSInteger signedNumber() {
        const NSUInteger coded = number();
        return static_cast<NSInteger>(coded >> 1 ^ (0 - (coded & 1)));
    }
    /// A number of things that take that many bytes each, or more, and follow.
    NSUInteger count(std::size_t least);
    NSData::Bytes take(NSUInteger count);
    float shortReal();
    double real();
    Ref<NSString> text();

    /// The fault is at the byte before the one to be read next.
    [[noreturn]] void fail(std::u16string_view message) const;

private:
    NSUInteger longNumber(NSUInteger first);
    template <class T> T littleEndian();

    NSData::Bytes bytes_;
    std::size_t position_;
};

}  // namespace tovi::detail
