#include <ToviFoundationKit/Foundation/ArchiveContent_p.h>
#include <ToviFoundationKit/Foundation/Collections_p.h>
#include <ToviFoundationKit/Foundation/NSDate.h>
#include <ToviFoundationKit/Foundation/NSMutableIndexSet.h>
#include <ToviFoundationKit/Foundation/NSNull.h>

namespace tovi::detail {

namespace {

class ArchiveParser {
public:
    ArchiveParser(NSData::Bytes bytes, ArchiveForm form) : at_(bytes) {
        content_.form = form;
        content_.bytes = bytes;
    }

    ArchiveContent parse() {
        parseHeader();
        parseNames();
        const NSUInteger count = at_.count(1);
        if (!count)
            at_.fail(u"there is no object in the archive");
        recordCount_ = count;
        content_.records.reserve(count);
        while (content_.records.size() < count)
            parseRecord();
        if (at_.left())
            failAtNext(u"the archive goes on behind its last object");
        makeInstances();
        return std::move(content_);
    }

private:
    // --- The parts of the archive

    void parseHeader() {
        for (const char each : archiveMagic)
            if (at_.byte() != static_cast<unsigned char>(each))
                at_.fail(u"this is no archive");
        if (const unsigned char version = at_.byte(); version > archiveVersion)
            throw ArchiveFault{ArchiveErrorNewer, NSString::stringWithFormat(
                                                      u"the archive has format %d, this library reads formats up to %d",
                                                      version, archiveVersion)};
        else if (!version)
            at_.fail(u"there is no format 0");
        const unsigned char form = at_.byte();
        if (form != 'k' && form != 'u')
            at_.fail(u"an unknown form of archive");
        if (form != static_cast<unsigned char>(content_.form))
            at_.fail(form == 'k' ? u"a keyed archive, which NSKeyedUnarchiver reads"
                                 : u"an unkeyed archive, which NSUnarchiver reads");
    }

    void parseNames() {
        for (NSUInteger left = at_.count(1); left; --left) {
            const Ref<NSString> name = at_.text();
            if (content_.names.find(name) != ArchiveNames::none)
                at_.fail(u"a name is there twice");
            content_.names.add(name);
        }
        lastUses_.resize(content_.names.count());
        classes_.resize(content_.names.count());
    }

    void parseRecord() {
        const char tag = static_cast<char>(at_.byte());
        const std::size_t position = at_.position();
        id object = tag == 'o' ? parseFields() : valueOf(tag);
        content_.records.push_back({tag, false, position, std::move(object)});
    }

    id valueOf(char tag) {
        switch (tag) {
            case '0':
                return NSNull::null();
            case 't':
                return at_.text();
            case 'T':
                return NSMutableString::stringWithString(at_.text());
            case 'c':
            case 's':
            case 'i':
            case 'l':
            case 'q':
                return signedNumber(tag);
            case 'C':
            case 'S':
            case 'I':
            case 'L':
            case 'Q':
                return unsignedNumber(tag);
            case 'f':
                return NSNumber::numberWithFloat(at_.shortReal());
            case 'd':
                return NSNumber::numberWithDouble(at_.real());
            case 'm':
                return NSDate::dateWithTimeIntervalSinceReferenceDate(at_.real());
            case 'P':
                return NSValue::valueWithPoint(point());
            case 'Z':
                return NSValue::valueWithSize(size());
            case 'R': {
                const NSPoint origin = point();
                return NSValue::valueWithRect({origin, size()});
            }
            case 'r': {
                const NSUInteger location = at_.number();
                return NSValue::valueWithRange({location, at_.number()});
            }
            case 'b':
                return NSData::dataWithBytes(at_.take(at_.number()));
            case 'B': {
                const Ref<NSMutableData> data = NSMutableData::data();
                data->appendBytes(at_.take(at_.number()));
                return data;
            }
            case 'x':
                return indexes()->copy();
            case 'X':
                return indexes();
            case 'k':
                return parseClass();
            default:
                return collectionOf(tag);
        }
    }

    id collectionOf(char tag) {
        const bool isDictionary = tag == 'h' || tag == 'H';
        if (!isDictionary && tag != 'a' && tag != 'A' && tag != 'u' && tag != 'U')
            at_.fail(u"an unknown kind of object");
        const NSUInteger count = at_.count(isDictionary ? 2 : 1);
        for (NSUInteger left = isDictionary ? 2 * count : count; left; --left)
            if (!reference())
                at_.fail(u"nil in a collection");
        switch (tag) {
            case 'a':
                return count ? CollectionAccess::newList(count) : NSArray::array();
            case 'A':
                return NSMutableArray::arrayWithCapacity(count);
            case 'h':
                return count ? CollectionAccess::newDictionary() : NSDictionary::dictionary();
            case 'H':
                return NSMutableDictionary::dictionary();
            case 'u':
                return count ? CollectionAccess::newSet() : NSSet::set();
            default:
                return NSMutableSet::set();
        }
    }

    // --- Values

    id signedNumber(char type) {
        const NSInteger value = at_.signedNumber();
        const Ref<NSNumber> number = boxInteger(&type, value);
        if (number->longLongValue() != value)
            at_.fail(u"a number that its type cannot hold");
        return number;
    }

    id unsignedNumber(char type) {
        const NSUInteger value = at_.number();
        const Ref<NSNumber> number = boxInteger(&type, static_cast<std::int64_t>(value));
        if (number->unsignedLongLongValue() != value)
            at_.fail(u"a number that its type cannot hold");
        return number;
    }

    NSPoint point() {
        const double x = at_.real();
        return {x, at_.real()};
    }

    NSSize size() {
        const double width = at_.real();
        return {width, at_.real()};
    }

    Ref<NSMutableIndexSet> indexes() {
        Ref<NSMutableIndexSet> indexes = NSMutableIndexSet::indexSet();
        NSUInteger end = 0;
        for (NSUInteger left = at_.count(2); left; --left) {
            const NSUInteger gap = at_.number();
            const NSUInteger length = at_.number();
            constexpr NSUInteger limit = NSNotFound;
            if (gap > limit - end || length > limit - end - gap || !length || (!gap && end))
                at_.fail(u"a run of indexes that cannot be");
            indexes->addIndexesInRange({end + gap, length});
            end += gap + length;
        }
        return indexes;
    }

    // --- Names, references and fields

    NSUInteger name() {
        const NSUInteger index = at_.number();
        if (index >= content_.names.count())
            at_.fail(u"a name beyond the last one");
        return index;
    }

    NSUInteger reference() {
        const NSUInteger result = at_.number();
        if (result > recordCount_)
            at_.fail(u"a reference beyond the last object");
        return result;
    }

    Class& classNamed(NSUInteger name) {
        if (!classes_[name])
            classes_[name] = Class::named(content_.names[name].UTF8String());
        if (!classes_[name])
            failAboutClass(name, u"there is no class %@");
        return *classes_[name];
    }

    [[noreturn]] void failAboutClass(NSUInteger name, std::u16string_view format) const {
        const Ref<NSString> text = NSString::stringWithFormat(format, content_.names[name]);
        throw ArchiveFault{ArchiveErrorUnknownClass,
                           NSString::stringWithFormat(u"byte %lu: %@", at_.position() - 1, text)};
    }

    id parseClass() { return classNamed(name()); }

    id parseFields() {
        const NSUInteger className = name();
        if (!classNamed(className).instancesRespondToSelector("initWithCoder:"_sel))
            failAboutClass(className, u"objects of class %@ cannot be unarchived: they do not respond to "
                                      u"initWithCoder:");
        if (content_.form == ArchiveForm::Keyed)
            parseKeyedFields();
        else
            while (const NSUInteger field = at_.number())
                if (field - 1 > recordCount_)
                    at_.fail(u"a reference beyond the last object");
        return nullptr;
    }

    void parseKeyedFields() {
        const NSUInteger turn = content_.records.size() + 1;
        while (const NSUInteger header = at_.number()) {
            if (header < 4 || header / 4 > content_.names.count())
                at_.fail(u"a key beyond the last name");
            if (std::exchange(lastUses_[header / 4 - 1], turn) == turn)
                at_.fail(u"an object uses a key twice");
            switch (static_cast<FieldKind>(header & 3)) {
                case FieldKind::Object:
                    reference();
                    break;
                case FieldKind::Integer:
                    at_.number();
                    break;
                case FieldKind::Double:
                    at_.real();
                    break;
                case FieldKind::Bool:
                    if (at_.byte() > 1)
                        at_.fail(u"neither true nor false");
            }
        }
    }

    [[noreturn]] void failAtNext(std::u16string_view message) {
        at_.byte();
        at_.fail(message);
    }

    // --- Instances

    void makeInstances() {
        for (ArchiveRecord& each : content_.records) {
            if (!each.isHosts())
                continue;
            ArchiveBytes at(content_.bytes, each.position);
            const NSUInteger name = at.number();
            each.position = at.position();
            content_.guarded(each, [&] { each.object = classes_[name]->makeInstance(); });
            if (!each.object)
                throw ArchiveFault{
                    ArchiveErrorUnknownClass,
                    NSString::stringWithFormat(u"class %@ has no constructor without arguments", content_.names[name])};
        }
    }

    ArchiveBytes at_;
    ArchiveContent content_;
    NSUInteger recordCount_ = 0;
    std::vector<Class*> classes_;       ///< by name
    std::vector<NSUInteger> lastUses_;  ///< by name: the record that used it last as a key
};

}  // namespace

ArchiveContent parsedArchive(NSData::Bytes bytes, ArchiveForm form) { return ArchiveParser(bytes, form).parse(); }

}  // namespace tovi::detail
