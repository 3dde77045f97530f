#include <ToviFoundationKit/Foundation/NSData.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <string_view>
#include <vector>

#include <ToviFoundationKit/Foundation/File_p.h>
#include <ToviFoundationKit/Foundation/NSError.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSData, NSObject)
TOVI_DEFINE_CLASS(NSMutableData, NSData)

namespace {

void* allocated(std::size_t size) {
    void* const memory = std::malloc(size);
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

std::string_view characters(NSData::Bytes bytes) noexcept {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

// The immutable form lies in one block with its bytes, whose size only its allocator knows: hence malloc and free.
void* NSData::operator new(std::size_t size) { return allocated(size); }
void NSData::operator delete(void* memory) { std::free(memory); }

Ref<NSData> NSData::uninitialized(NSUInteger length) {
    void* const memory = allocated(sizeof(NSData) + length);
    return adopt(*::new (memory) NSData(static_cast<std::byte*>(memory) + sizeof(NSData), length));
}

Ref<NSData> NSData::data() { return uninitialized(0); }

Ref<NSData> NSData::dataWithBytes(Bytes bytes) {
    const Ref<NSData> data = uninitialized(bytes.size());
    std::ranges::copy(bytes, data->bytes_);
    return data;
}

Ref<NSData> NSData::dataWithBytes_length(const void* bytes, NSUInteger length) {
    return dataWithBytes({static_cast<const std::byte*>(bytes), length});
}

Ref<NSData> NSData::dataWithData(const NSData& other) { return dataWithBytes(other.bytes()); }

RefPtr<NSData> NSData::dataWithContentsOfFile(const NSString& path, RefPtr<NSError>* error) {
    std::vector<std::byte> content;
    if (const int failure = readFile(path.UTF8String(), content)) {
        if (error)
            *error = NSError::errorWithErrno_subject(failure, path);
        return nullptr;
    }
    return dataWithBytes(content);
}

Ref<NSData> NSData::subdataWithRange(NSRange range) const {
    if (!range.fitsIn(length_))
        NSException::raise(NSRangeException, u"*** -[%@ subdataWithRange:]: range {%lu, %lu} exceeds data length %lu",
                           isa(), range.location, range.length, length_);
    return dataWithBytes(bytes().subspan(range.location, range.length));
}

bool NSData::isEqualToData(const NSData& other) const noexcept {
    return characters(bytes()) == characters(other.bytes());
}

bool NSData::writeToFile_atomically(const NSString& path, bool atomically, RefPtr<NSError>* error) const {
    const int failure =
        atomically ? replaceFile(path.UTF8String(), bytes()) : overwriteFile(path.UTF8String(), bytes());
    if (failure && error)
        *error = NSError::errorWithErrno_subject(failure, path);
    return !failure;
}

bool NSData::isEqual(const NSObject* other) const {
    const auto* data = as<NSData>(other);
    return data && isEqualToData(*data);
}

NSUInteger NSData::hash() const { return std::hash<std::string_view>()(characters(bytes())); }

Ref<NSString> NSData::description() const {
    StringBuilder text;
    text.append(u'<');
    for (NSUInteger i = 0; i < length_; ++i) {
        if (i && i % 4 == 0)
            text.append(u' ');
        const auto byte = std::to_integer<unsigned>(bytes_[i]);
        text.append(u"0123456789abcdef"[byte >> 4]).append(u"0123456789abcdef"[byte & 15]);
    }
    return text.append(u'>').string();
}

Ref<NSObject> NSData::copy() const { return share(*this); }
Ref<NSObject> NSData::mutableCopy() const { return NSMutableData::dataWithData(*this); }

Ref<NSMutableData> NSMutableData::data() { return adopt(*new NSMutableData); }

Ref<NSMutableData> NSMutableData::dataWithCapacity(NSUInteger capacity) {
    const Ref<NSMutableData> data = NSMutableData::data();
    data->reserve(capacity);
    return data;
}

Ref<NSMutableData> NSMutableData::dataWithData(const NSData& other) {
    const Ref<NSMutableData> data = dataWithCapacity(other.length());
    data->appendData(other);
    return data;
}

NSMutableData::~NSMutableData() { std::free(bytes_); }

void NSMutableData::reserve(NSUInteger capacity) {
    if (capacity <= capacity_)
        return;
    void* const grown = std::realloc(bytes_, capacity);
    if (!grown)
        throw std::bad_alloc();
    bytes_ = static_cast<std::byte*>(grown);
    capacity_ = capacity;
}

void NSMutableData::appendBytes(Bytes bytes) {
    if (bytes.empty())
        return;
    if (bytes.size() > capacity_ - length_) {
        const bool isOwn = std::less_equal<>()(bytes_, bytes.data()) && std::less<>()(bytes.data(), bytes_ + length_);
        if (isOwn)
            return appendData(dataWithBytes(bytes));
        reserve(std::max(length_ + bytes.size(), capacity_ + capacity_ / 2));
    }
    std::memcpy(bytes_ + length_, bytes.data(), bytes.size());
    length_ += bytes.size();
}

void NSMutableData::setLength(NSUInteger length) {
    reserve(length);
    if (length > length_)
        std::memset(bytes_ + length_, 0, length - length_);
    length_ = length;
}

void NSMutableData::setData(const NSData& other) {
    if (&other == this)
        return;
    length_ = 0;
    appendData(other);
}

Ref<NSObject> NSMutableData::copy() const { return dataWithBytes(bytes()); }

namespace {

RefPtr<NSData> dataWithContentsOfFile(const NSString& path) { return NSData::dataWithContentsOfFile(path); }
bool writeToFile_atomically(const NSData& receiver, const NSString& path, bool atomically) {
    return receiver.writeToFile_atomically(path, atomically);
}

const void* bytes(const NSData& receiver) { return receiver.bytes().data(); }
void appendBytes_length(NSMutableData& receiver, const void* bytes, NSUInteger length) {
    receiver.appendBytes({static_cast<const std::byte*>(bytes), length});
}

const Additions<NSData> additions{
    classLevel<static_cast<Ref<NSData> (*)()>(&NSData::data)>("data"),
    classLevel<&NSData::dataWithBytes_length>("dataWithBytes:length:"),
    classLevel<static_cast<Ref<NSData> (*)(const NSData&)>(&NSData::dataWithData)>("dataWithData:"),
    classLevel<&dataWithContentsOfFile>("dataWithContentsOfFile:"),
    instance<&NSData::length>("length"),
    instance<&bytes>("bytes"),
    instance<&NSData::subdataWithRange>("subdataWithRange:"),
    instance<&NSData::isEqualToData>("isEqualToData:"),
    instance<&writeToFile_atomically>("writeToFile:atomically:"),
};

const Additions<NSMutableData> mutableAdditions{
    classLevel<&NSMutableData::data>("data"),
    classLevel<&NSMutableData::dataWithCapacity>("dataWithCapacity:"),
    classLevel<&NSMutableData::dataWithData>("dataWithData:"),
    instance<&NSMutableData::appendData>("appendData:"),
    instance<&appendBytes_length>("appendBytes:length:"),
    instance<&NSMutableData::setLength>("setLength:"),
    instance<&NSMutableData::setData>("setData:"),
};

}  // namespace

}  // namespace tovi
