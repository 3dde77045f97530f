#include <ToviFoundationKit/Foundation/NSCompoundPredicate.h>

#include <algorithm>

#include <ToviFoundationKit/Foundation/PlainPredicates_p.h>
#include <ToviFoundationKit/Foundation/PredicateCompiler_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSCompoundPredicate, NSPredicate)

Ref<NSCompoundPredicate> NSCompoundPredicate::initWithType_subpredicates(NSCompoundPredicateType type,
                                                                         const NSArray& subpredicates) {
    if (type > NSOrPredicateType || (type == NSNotPredicateType && subpredicates.count() != 1))
        NSException::raise(NSInvalidArgumentException, u"a compound of type %lu cannot have %lu predicates", type,
                           subpredicates.count());
    Parts parts;
    for (NSPredicate& each : subpredicates.each<NSPredicate>())
        parts.emplace_back(each);
    return adopt(*new NSCompoundPredicate(type, std::move(parts)));
}

Ref<NSCompoundPredicate> NSCompoundPredicate::andPredicateWithSubpredicates(const NSArray& subpredicates) {
    return initWithType_subpredicates(NSAndPredicateType, subpredicates);
}

Ref<NSCompoundPredicate> NSCompoundPredicate::orPredicateWithSubpredicates(const NSArray& subpredicates) {
    return initWithType_subpredicates(NSOrPredicateType, subpredicates);
}

Ref<NSCompoundPredicate> NSCompoundPredicate::notPredicateWithSubpredicate(NSPredicate& predicate) {
    return adopt(*new NSCompoundPredicate(NSNotPredicateType, {predicate}));
}

const detail::PredicateNode& NSCompoundPredicate::essence() const {
    const NSCompoundPredicate* compound = this;
    while (compound->type_ != NSNotPredicateType && compound->parts_.size() == 1) {
        const PredicateNode& only = *compound->parts_[0];
        if (&only.isa() != &classObject())
            return only;
        compound = static_cast<const NSCompoundPredicate*>(&only);
    }
    if (compound->parts_.empty())
        return NSTruthPredicate::of(compound->type_ == NSAndPredicateType);
    return *compound;
}

bool NSCompoundPredicate::isSameAlone(const PredicateNode& other) const {
    return type_ == static_cast<const NSCompoundPredicate&>(other).type_;
}

Ref<detail::PredicateNode> NSCompoundPredicate::withParts(Parts parts) const {
    return adopt(*new NSCompoundPredicate(type_, std::move(parts)));
}

void NSCompoundPredicate::write(StringBuilder& out, std::size_t index) const {
    if (type_ == NSNotPredicateType)
        out.append(index ? u"" : u"NOT ");
    else if (index && index < parts_.size())
        out.append(type_ == NSAndPredicateType ? u" AND " : u" OR ");
}

void NSCompoundPredicate::compile(detail::PredicateCompiler& out, std::size_t index) const {
    using Code = detail::PredicateInstruction::Code;
    const bool isLast = index == parts_.size();
    if (type_ == NSNotPredicateType) {
        if (isLast)
            out.emit(Code::Not);
    } else if (isLast) {
        out.landAll();
    } else if (index) {
        out.emitJump(type_ == NSAndPredicateType ? Code::JumpIfFalse : Code::JumpIfTrue);
    }
}

Ref<NSArray> NSCompoundPredicate::archivedFields() const { return NSArray::of(type_); }

bool NSCompoundPredicate::setArchivedFields(const NSArray& fields) {
    const auto* type = fields.count() == 1 ? as<NSNumber>(&fields[0]) : nullptr;
    if (!type || type->unsignedIntegerValue() > NSOrPredicateType)
        return false;
    type_ = static_cast<NSCompoundPredicateType>(type->unsignedIntegerValue());
    return (type_ != NSNotPredicateType || parts_.size() == 1) &&
           std::all_of(parts_.begin(), parts_.end(), [](const auto& each) { return as<NSPredicate>(each.get()); });
}

namespace {

const Additions<NSCompoundPredicate> additions{
    classLevel<&NSCompoundPredicate::andPredicateWithSubpredicates>("andPredicateWithSubpredicates:"),
    classLevel<&NSCompoundPredicate::orPredicateWithSubpredicates>("orPredicateWithSubpredicates:"),
    classLevel<&NSCompoundPredicate::notPredicateWithSubpredicate>("notPredicateWithSubpredicate:"),
    instance<&NSCompoundPredicate::compoundPredicateType>("compoundPredicateType"),
    instance<&NSCompoundPredicate::subpredicates>("subpredicates"),
};

}  // namespace

}  // namespace tovi
