#include <ToviFoundationKit/Runtime/NSInvocation.h>

#include <algorithm>
#include <string_view>

#include <ToviFoundationKit/Runtime/Additions.h>
#include <ToviFoundationKit/Runtime/NSException.h>

namespace tovi {

TOVI_DEFINE_CLASS(NSMethodSignature, NSObject)
TOVI_DEFINE_CLASS(NSInvocation, NSObject)

namespace {

void requireArgument(const char* operation, NSUInteger index, NSUInteger count) {
    if (index >= count)
        NSException::raise(NSInvalidArgumentException, u"*** -[%s]: index %lu beyond bounds [0 .. %lu]", operation,
                           index, count - 1);
}

std::string_view text(const char* type) { return type; }

}  // namespace

Ref<NSMethodSignature> NSMethodSignature::forMethod(const Method& method) {
    return adopt(*new NSMethodSignature(method));
}

const char* NSMethodSignature::getArgumentTypeAtIndex(NSUInteger index) const {
    requireArgument("NSMethodSignature getArgumentTypeAtIndex:", index, numberOfArguments());
    return types()[1 + index];
}

bool NSMethodSignature::isEqual(const NSObject* other) const {
    const auto* signature = dynamic_cast<const NSMethodSignature*>(other);
    return signature && std::ranges::equal(types(), signature->types(), {}, text, text);
}

NSUInteger NSMethodSignature::hash() const {
    NSUInteger hash = 0;
    for (const char* type : types())
        hash = hash * 31 + std::hash<std::string_view>()(type);
    return hash;
}

Ref<NSInvocation> NSInvocation::invocationWithMethodSignature(const NSMethodSignature& signature) {
    return adopt(*new NSInvocation(signature));
}

NSInvocation::NSInvocation(const NSMethodSignature& signature) : signature_(share(signature)) {
    const Method& method = signature.method_;
    for (unsigned i = 0; i < method.argumentCount; ++i)
        arguments_.push_back(MessageValue().converted(method.argumentKind(i), method.argumentEncoding(i)));
}

std::size_t NSInvocation::position(NSUInteger index, const char* operation) const {
    requireArgument(operation, index, signature_->numberOfArguments());
    return index - 2;
}

void NSInvocation::setValue_atIndex(const MessageValue& value, NSUInteger index) {
    if (index == 0)
        return setTarget(value.converted(ValueKind::Object, "@").object());
    if (index == 1)
        return setSelector(value.converted(ValueKind::Selector, ":").raw<Selector>());
    MessageValue& argument = arguments_[position(index, "NSInvocation setArgument:atIndex:")];
    argument = value.converted(argument.kind(), argument.encoding());
}

MessageValue NSInvocation::valueAtIndex(NSUInteger index) const {
    if (index < 2)
        return index == 0 ? MessageValue(target_) : MessageValue::of(selector_);
    return arguments_[position(index, "NSInvocation getArgument:atIndex:")];
}

void NSInvocation::invoke() { invokeWithTarget(target_); }

void NSInvocation::invokeWithTarget(NSObject* target) {
    const Method& expected = signature_->method_;
    result_ = MessageValue();
    if (!target)
        return;
    const Ref<NSObject> receiver(*target);
    const Method& method = detail::methodFor(receiver, selector_);
    if (method.argumentCount != expected.argumentCount)
        NSException::raise(NSInvalidArgumentException,
                           u"*** -[NSInvocation invoke]: %s of %@ takes %u arguments, not %u", selector_,
                           receiver->isa(), method.argumentCount, expected.argumentCount);
    result_ = detail::sendConverting(method, receiver, arguments_.data(), arguments_.size());
}

namespace {

const Additions<NSMethodSignature> signatureAdditions{
    instance<&NSMethodSignature::numberOfArguments>("numberOfArguments"),
};

const Additions<NSInvocation> invocationAdditions{
    classLevel<&NSInvocation::invocationWithMethodSignature>("invocationWithMethodSignature:"),
    instance<&NSInvocation::methodSignature>("methodSignature"),
    instance<&NSInvocation::target>("target"),
    instance<&NSInvocation::setTarget>("setTarget:"),
    instance<&NSInvocation::selector>("selector"),
    instance<&NSInvocation::setSelector>("setSelector:"),
    instance<&NSInvocation::invoke>("invoke"),
    instance<&NSInvocation::invokeWithTarget>("invokeWithTarget:"),
};

}  // namespace

}  // namespace tovi
