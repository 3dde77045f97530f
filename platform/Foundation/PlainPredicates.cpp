#include <ToviFoundationKit/Foundation/PlainPredicates_p.h>

#include <ToviFoundationKit/Foundation/NSArray.h>
#include <ToviFoundationKit/Foundation/PredicateCompiler_p.h>
#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/StringBuilder.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSTruthPredicate, NSPredicate)
TOVI_DEFINE_CLASS(NSBlockPredicate, NSPredicate)

using Code = detail::PredicateInstruction::Code;

NSTruthPredicate& NSTruthPredicate::of(bool value) {
    static NSTruthPredicate& no = *adopt(*new NSTruthPredicate(false)).leak();
    static NSTruthPredicate& yes = *adopt(*new NSTruthPredicate(true)).leak();
    return value ? yes : no;
}

bool NSTruthPredicate::isSameAlone(const PredicateNode& other) const {
    return value_ == static_cast<const NSTruthPredicate&>(other).value_;
}

void NSTruthPredicate::write(StringBuilder& out, std::size_t) const {
    out.append(value_ ? u"TRUEPREDICATE" : u"FALSEPREDICATE");
}

void NSTruthPredicate::compile(detail::PredicateCompiler& out, std::size_t) const {
    out.emit(Code::Truth, nullptr, value_);
}

Ref<NSArray> NSTruthPredicate::archivedFields() const { return NSArray::of(value_); }

bool NSTruthPredicate::setArchivedFields(const NSArray& fields) {
    const auto* value = fields.count() == 1 ? as<NSNumber>(&fields[0]) : nullptr;
    value_ = value && value->boolValue();
    return value && parts_.empty();
}

void NSBlockPredicate::write(StringBuilder& out, std::size_t) const {
    out.append(NSString::stringWithFormat(u"BLOCKPREDICATE(%p)", static_cast<const void*>(this)));
}

void NSBlockPredicate::compile(detail::PredicateCompiler& out, std::size_t) const { out.emit(Code::Ask, this); }

Ref<NSArray> NSBlockPredicate::archivedFields() const {
    NSException::raise(NSInvalidArgumentException, u"a predicate with a block cannot be archived");
}

}  // namespace tovi
