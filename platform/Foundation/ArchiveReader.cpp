#include <ToviFoundationKit/Foundation/ArchiveReader_p.h>

#include <bit>

#include <ToviFoundationKit/Foundation/ArchiveTables_p.h>
#include <ToviFoundationKit/Foundation/NSError.h>

namespace tovi::detail {

bool ArchiveReader::read(const NSData& data, NSCoder& coder, RefPtr<NSError>* error) {
    // A host's object may get hold of the data and change it.
    const Ref<NSObject> bytes = data.copy();
    try {
        content_ = parsedArchive(static_cast<const NSData&>(*bytes).bytes(), content_.form);
        bringBack(coder);
        return true;
    } catch (const ArchiveFault& fault) {
        abandon();
        if (error)
            *error = NSError::errorWithDomain_code_description(NSString::stringWithCharacters(ArchiveErrorDomain),
                                                               fault.code, fault.text);
        return false;
    } catch (...) {
        abandon();
        throw;
    }
}

void ArchiveReader::bringBack(NSCoder& coder) {
    fillLists();
    ArchiveTables tables(content_);
    tables.fillBeforeHosts();
    initializeAll(coder);
    tables.fillAfterHosts();
    content_.bytes = {};
}

void ArchiveReader::fillLists() {
    for (const ArchiveRecord& each : content_.records) {
        if (!each.isList())
            continue;
        ArchiveReferences references(content_, each);
        while (const NSUInteger reference = references.next())
            CollectionAccess::append(static_cast<NSArray&>(*each.object), &content_.objectAt(reference));
    }
}

namespace {

// Empty ones may be shared by everybody.
template <class Table> void empty(Table& table) {
    if (table.count())
        Table().swap(table);
}

}  // namespace

// The objects made so far may hold each other in circles. What else goes wrong now is not worth telling.
void ArchiveReader::abandon() noexcept {
    turn_ = nullptr;
    for (const ArchiveRecord& each : content_.records) {
        if (each.isList()) {
            CollectionAccess::removeAll(static_cast<NSArray&>(*each.object));
        } else if (each.isDictionary()) {
            empty(CollectionAccess::table(static_cast<NSDictionary&>(*each.object)));
        } else if (each.isSet()) {
            empty(CollectionAccess::table(static_cast<NSSet&>(*each.object)));
        } else if (each.isHosts() && each.object->respondsToSelector("breakReferenceCycles"_sel)) {
            try {
                send<void>(*each.object, "breakReferenceCycles"_sel);
            } catch (...) {
            }
        }
    }
    content_.records.clear();
}

// --- Hosts' objects --------------------------------------------------------------------------------------------------

void ArchiveReader::initializeAll(NSCoder& coder) {
    struct Visit {
        const ArchiveRecord* record;
        ArchiveReferences references;
    };
    MessageSite site("initWithCoder:"_sel);
    std::vector<bool> isVisited(content_.records.size());
    std::vector<Visit> visits;
    const auto visit = [&](std::size_t index) {
        const ArchiveRecord& record = content_.records[index];
        if (!isVisited[index])
            visits.push_back({&record, ArchiveReferences(content_, record)});
        isVisited[index] = true;
    };
    visit(0);
    while (!visits.empty()) {
        if (const NSUInteger reference = visits.back().references.next()) {
            visit(reference - 1);
            continue;
        }
        const ArchiveRecord& record = *visits.back().record;
        visits.pop_back();
        if (record.isHosts())
            initialize(record, site, coder);
    }
    for (std::size_t i = 0; i < isVisited.size(); ++i)
        if (!isVisited[i])
            content_.fail(content_.records[i], ArchiveErrorDamaged, u"nothing refers to it"_ns);
}

void ArchiveReader::initialize(const ArchiveRecord& record, MessageSite& site, NSCoder& coder) {
    readFields(record);
    turn_ = &record;
    content_.guarded(record, [&] { site.send<void>(*record.object, coder); });
    turn_ = nullptr;
}

void ArchiveReader::readFields(const ArchiveRecord& record) {
    fields_.clear();
    nextField_ = 0;
    ArchiveBytes at(content_.bytes, record.position);
    while (const NSUInteger header = at.number()) {
        if (content_.form == ArchiveForm::Unkeyed) {
            fields_.push_back({0, FieldKind::Object, header - 1});
        } else {
            const auto kind = static_cast<FieldKind>(header & 3);
            fields_.push_back({header / 4 - 1, kind, readValue(at, kind)});
        }
    }
}

NSUInteger ArchiveReader::readValue(ArchiveBytes& at, FieldKind kind) {
    switch (kind) {
        case FieldKind::Object:
            return at.number();
        case FieldKind::Integer:
            return static_cast<NSUInteger>(at.signedNumber());
        case FieldKind::Double:
            return std::bit_cast<NSUInteger>(at.real());
        case FieldKind::Bool:
            return at.byte();
    }
    return 0;
}

// --- Fields ----------------------------------------------------------------------------------------------------------

void ArchiveReader::requireTurn() const {
    if (!turn_)
        NSException::raise(NSInvalidArgumentException, u"fields can only be decoded while initWithCoder: is sent");
}

// Objects mostly ask in the order in which they were archived.
auto ArchiveReader::fieldFor(const NSString& key) const -> const Field* {
    requireTurn();
    if (nextField_ < fields_.size() && content_.names[fields_[nextField_].name].isEqualToString(key))
        return &fields_[nextField_++];
    const NSUInteger name = content_.names.find(key);
    for (std::size_t i = 0; name != ArchiveNames::none && i < fields_.size(); ++i) {
        if (fields_[i].name == name) {
            nextField_ = i + 1;
            return &fields_[i];
        }
    }
    return nullptr;
}

auto ArchiveReader::fieldFor(const NSString& key, FieldKind kind) const -> const Field* {
    static constexpr const char* names[] = {"an object", "an integer", "a double", "a truth value"};
    const Field* const field = fieldFor(key);
    if (field && field->kind != kind)
        NSException::raise(NSInvalidUnarchiveOperationException, u"%s is stored under the key '%@', not %s",
                           names[static_cast<int>(field->kind)], key, names[static_cast<int>(kind)]);
    return field;
}

id ArchiveReader::objectFor(const NSString& key) const {
    const Field* const field = fieldFor(key, FieldKind::Object);
    return field ? objectAt(field->bits) : id();
}

NSInteger ArchiveReader::integerFor(const NSString& key) const {
    const Field* const field = fieldFor(key, FieldKind::Integer);
    return field ? static_cast<NSInteger>(field->bits) : 0;
}

double ArchiveReader::doubleFor(const NSString& key) const {
    const Field* const field = fieldFor(key, FieldKind::Double);
    return field ? std::bit_cast<double>(field->bits) : 0;
}

bool ArchiveReader::boolFor(const NSString& key) const {
    const Field* const field = fieldFor(key, FieldKind::Bool);
    return field && field->bits;
}

id ArchiveReader::nextObject() {
    requireTurn();
    if (nextField_ == fields_.size())
        NSException::raise(NSInvalidUnarchiveOperationException,
                           u"the archived object of class %@ has no more than %lu objects", turn_->object->isa(),
                           fields_.size());
    return objectAt(fields_[nextField_++].bits);
}

}  // namespace tovi::detail
