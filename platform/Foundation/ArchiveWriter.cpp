#include <ToviFoundationKit/Foundation/ArchiveWriter_p.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSDictionary.h>
#include <ToviFoundationKit/Foundation/NSIndexSet.h>
#include <ToviFoundationKit/Foundation/NSSet.h>
#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi::detail {

Ref<NSData> ArchiveWriter::archive(const NSObject& root, NSCoder& coder) {
    MessageSite encode("encodeWithCoder:"_sel);
    referenceTo(root);
    for (std::size_t i = 0; i < objects_.size(); ++i) {
        NSObject& object = *objects_[i];
        const Manner manner = mannerFor(object.isa());
        if (manner.tag != 'o') {
            putRecord(object, manner.tag);
            continue;
        }
        putByte('o');
        put(manner.name);
        turn_ = i + 1;
        encode.send<void>(object, coder);
        turn_ = 0;
        put(0);
    }
    std::string records = std::exchange(bytes_, std::string(archiveMagic));
    putByte(static_cast<char>(archiveVersion));
    putByte(static_cast<char>(form_));
    put(names_.count());
    for (NSUInteger i = 0; i < names_.count(); ++i)
        putText(names_[i]);
    put(objects_.size());
    bytes_ += records;
    return NSData::dataWithBytes_length(bytes_.data(), bytes_.size());
}

const ArchiveWriter::Manner& ArchiveWriter::mannerFor(const Class& type) {
    const auto found = manners_.find(&type);
    return found != manners_.end() ? found->second : manners_.emplace(&type, newManner(type)).first->second;
}

// What could not be read again is not written.
ArchiveWriter::Manner ArchiveWriter::newManner(const Class& type) {
    const char tag = archiveTag(type);
    if (tag != 'o')
        return {tag, 0};
    const auto refuse = [&type](const char* why) {
        NSException::raise(NSInvalidArgumentException, u"an object of class %@ cannot be archived: %s", type, why);
    };
    if (!type.instancesRespondToSelector("encodeWithCoder:"_sel))
        refuse("it does not respond to encodeWithCoder:");
    if (!type.instancesRespondToSelector("initWithCoder:"_sel))
        refuse("it does not respond to initWithCoder:");
    if (Class::named(type.name()) != &type)
        refuse("another class has that name");
    if (!type.makeInstance())
        refuse("the class has no constructor without arguments");
    return {tag, names_.indexOf(*NSString::fromUTF8(type.name()))};
}

NSUInteger ArchiveWriter::referenceTo(const NSObject& object) {
    const auto hash = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&object) * 0x9E3779B97F4A7C15U >> 32);
    index_.reserve(objects_.size() + 1);
    const std::size_t position = index_.find(hash);
    for (std::size_t i = position; index_.holds(i, hash); ++i)
        if (objects_[HashIndex::place(index_[i])].get() == &object)
            return HashIndex::number(index_[i]);
    objects_.push_back(share(object));
    index_.insert(position, HashIndex::slot(hash, objects_.size()));
    return objects_.size();
}

// --- Fields ----------------------------------------------------------------------------------------------------------

void ArchiveWriter::requireTurn() const {
    if (!turn_)
        NSException::raise(NSInvalidArgumentException, u"fields can only be encoded while encodeWithCoder: is sent");
}

void ArchiveWriter::beginField(const NSString& key, FieldKind kind) {
    requireTurn();
    const NSUInteger name = names_.indexOf(key);
    if (name >= lastUses_.size())
        lastUses_.resize(names_.count());
    if (std::exchange(lastUses_[name], turn_) == turn_)
        NSException::raise(NSInvalidArgumentException, u"the key '%@' is used twice for an object of class %@", key,
                           objects_[turn_ - 1]->isa());
    put(4 * (name + 1) + static_cast<NSUInteger>(kind));
}

void ArchiveWriter::putObject(const NSObject* object, const NSString& key) {
    beginField(key, FieldKind::Object);
    put(object ? referenceTo(*object) : 0);
}

void ArchiveWriter::putInteger(NSInteger value, const NSString& key) {
    beginField(key, FieldKind::Integer);
    putSigned(value);
}

void ArchiveWriter::putDouble(double value, const NSString& key) {
    beginField(key, FieldKind::Double);
    putBits(std::bit_cast<std::uint64_t>(value));
}

void ArchiveWriter::putBool(bool value, const NSString& key) {
    beginField(key, FieldKind::Bool);
    putByte(value);
}

void ArchiveWriter::putObject(const NSObject* object) {
    requireTurn();
    put(1 + (object ? referenceTo(*object) : 0));
}

// --- Records ---------------------------------------------------------------------------------------------------------

void ArchiveWriter::putRecord(const NSObject& object, char tag) {
    if (tag == 'd')
        return putNumber(static_cast<const NSNumber&>(object));
    if (tag == 'R')
        return putStructure(static_cast<const NSValue&>(object));
    putByte(tag);
    switch (tag) {
        case 't':
        case 'T':
            return putText(static_cast<const NSString&>(object));
        case 'a':
        case 'A':
            return putElements(static_cast<const NSArray&>(object));
        case 'h':
        case 'H':
            return putEntries(static_cast<const NSDictionary&>(object));
        case 'u':
        case 'U':
            return putElements(static_cast<const NSSet&>(object));
        case 'b':
        case 'B': {
            const NSData::Bytes bytes = static_cast<const NSData&>(object).bytes();
            put(bytes.size());
            bytes_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
            return;
        }
        case 'm':
            return putBits(
                std::bit_cast<std::uint64_t>(static_cast<const NSDate&>(object).timeIntervalSinceReferenceDate()));
        case 'x':
        case 'X':
            return putIndexes(static_cast<const NSIndexSet&>(object));
        case 'k': {
            const Class& type = static_cast<const Class&>(object);
            if (Class::named(type.name()) != &type)
                NSException::raise(NSInvalidArgumentException,
                                   u"the class object %@ cannot be archived: another class has that name", type);
            return put(names_.indexOf(*NSString::fromUTF8(type.name())));
        }
    }
}

void ArchiveWriter::putNumber(const NSNumber& number) {
    const char type = *number.objCType();
    putByte(type);
    if (type == 'd')
        putBits(std::bit_cast<std::uint64_t>(number.doubleValue()));
    else if (type == 'f')
        putBits(std::bit_cast<std::uint32_t>(number.floatValue()));
    else if (type < 'a')
        put(number.unsignedLongLongValue());
    else
        putSigned(number.longLongValue());
}

void ArchiveWriter::putStructure(const NSValue& value) {
    const auto putReals = [this](std::initializer_list<double> reals) {
        for (const double each : reals)
            putBits(std::bit_cast<std::uint64_t>(each));
    };
    const std::string_view type = value.objCType();
    if (type == encodingOf<NSPoint>()) {
        const NSPoint point = value.pointValue();
        putByte('P');
        putReals({point.x, point.y});
    } else if (type == encodingOf<NSSize>()) {
        const NSSize size = value.sizeValue();
        putByte('Z');
        putReals({size.width, size.height});
    } else if (type == encodingOf<NSRect>()) {
        const NSRect rect = value.rectValue();
        putByte('R');
        putReals({rect.origin.x, rect.origin.y, rect.size.width, rect.size.height});
    } else if (type == encodingOf<NSRange>()) {
        const NSRange range = value.rangeValue();
        putByte('r');
        put(range.location);
        put(range.length);
    } else {
        NSException::raise(NSInvalidArgumentException, u"a value of type %s cannot be archived", value.objCType());
    }
}

void ArchiveWriter::putIndexes(const NSIndexSet& indexes) {
    const std::vector<NSRange> runs = indexes.ranges();
    NSUInteger end = 0;
    put(runs.size());
    for (const NSRange run : runs) {
        put(run.location - end);
        put(run.length);
        end = run.end();
    }
}

template <class Collection> void ArchiveWriter::putElements(const Collection& collection) {
    put(collection.count());
    for (const NSObject& each : collection)
        putReference(each);
}

void ArchiveWriter::putEntries(const NSDictionary& dictionary) {
    put(dictionary.count());
    for (const auto [key, value] : dictionary) {
        putReference(key);
        putReference(value);
    }
}

// --- Bytes -----------------------------------------------------------------------------------------------------------

void ArchiveWriter::put(NSUInteger number) {
    for (; number >= 0x80; number >>= 7)
        putByte(static_cast<char>(number | 0x80));
    putByte(static_cast<char>(number));
}

void ArchiveWriter::putSigned(NSInteger number) {
    put(static_cast<NSUInteger>(number) << 1 ^ static_cast<NSUInteger>(number >> 63));
}

template <class Bits> void ArchiveWriter::putBits(Bits bits) {
    for (std::size_t i = 0; i < sizeof bits; ++i)
        putByte(static_cast<char>(bits >> 8 * i & 0xFF));
}

void ArchiveWriter::putText(std::u16string_view text) {
    unsigned all = 0;
    for (const char16_t unit : text)
        all |= unit;
    const bool wide = all > 0xFF;
    put(2 * text.size() + wide);
    const std::size_t start = bytes_.size();
    bytes_.resize(start + (wide ? 2 : 1) * text.size());
    char* target = bytes_.data() + start;
    for (const char16_t unit : text) {
        *target++ = static_cast<char>(unit & 0xFF);
        if (wide)
            *target++ = static_cast<char>(unit >> 8);
    }
}

}  // namespace tovi::detail
