#include <ToviFoundationKit/Runtime/Message.h>

#include <algorithm>
#include <cstring>
#include <string>

#include <ToviFoundationKit/Runtime/Message_p.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi::detail {

std::string operationName(const NSObject& receiver, Selector selector) {
    const bool classLevel = receiver.isKindOfClass(Class::classObject());
    const Class& named = classLevel ? static_cast<const Class&>(receiver) : receiver.isa();
    return std::string(classLevel ? "+[" : "-[").append(named.name()).append(" ").append(selector.name()).append("]");
}

namespace {

/// What an argument is, by its label: "object" for "insertObject:atIndex:" and 0, "index" for 1.
std::string argumentName(Selector selector, std::size_t index) {
    std::string_view label = selector.name();
    for (; index > 0; --index)
        label.remove_prefix(std::min(label.find(':'), label.size() - 1) + 1);
    label = label.substr(0, label.find(':'));
    const std::size_t word = label.find_last_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    if (word == label.npos)
        return "argument";
    std::string name(label.substr(word));
    name[0] = static_cast<char>(name[0] - 'A' + 'a');
    return name;
}

}  // namespace

void raiseNil() { NSException::raise(NSInvalidArgumentException, u"nil was used as an object"); }

void raiseUnrecognizedSelector(const NSObject& receiver, Selector selector) {
    const bool classLevel = receiver.isKindOfClass(Class::classObject());
    NSException::raise(NSInvalidArgumentException, u"%s: unrecognized selector sent to %s %p",
                       operationName(receiver, selector), classLevel ? "class" : "instance",
                       static_cast<const void*>(&receiver));
}

void raiseNilArgument(const Method& method, const NSObject& receiver, std::size_t index) {
    NSException::raise(NSInvalidArgumentException, u"*** %s: %s cannot be nil",
                       operationName(receiver, method.selector), argumentName(method.selector, index));
}

void requireInstance(const Method& method, const NSObject& receiver, std::size_t index, const NSObject& argument,
                     const Class& expected) {
    if (!argument.isKindOfClass(expected))
        NSException::raise(NSInvalidArgumentException, u"*** %s: %s must be of class %@, not %@",
                           operationName(receiver, method.selector), argumentName(method.selector, index), expected,
                           argument.isa());
}

namespace {

void raiseMissingArguments(const Method& method, const NSObject& receiver, std::size_t count) {
    NSException::raise(NSInvalidArgumentException, u"*** %s: %u argument%s needed, %lu given",
                       operationName(receiver, method.selector), method.argumentCount,
                       method.argumentCount == 1 ? "" : "s", count);
}

bool fits(const Method& method, const MessageValue* arguments) {
    for (unsigned i = 0; i < method.argumentCount; ++i)
        if (arguments[i].kind() != method.argumentKind(i) ||
            std::strcmp(arguments[i].encoding(), method.argumentEncoding(i)))
            return false;
    return true;
}

MessageValue argumentFor(const Method& method, const NSObject& receiver, unsigned index, const MessageValue& given) {
    if (auto value = given.convertedIfPossible(method.argumentKind(index), method.argumentEncoding(index)))
        return *std::move(value);
    if (given.kind() == ValueKind::Object && !given.object())
        raiseNilArgument(method, receiver, index);
    NSException::raise(NSInvalidArgumentException, u"*** %s: %s must be of type %s, not %s",
                       operationName(receiver, method.selector), argumentName(method.selector, index),
                       method.argumentEncoding(index),
                       given.kind() == ValueKind::Object ? given.object()->isa().name() : given.encoding());
}

}  // namespace

MessageValue sendConverting(const Method& method, NSObject& receiver, const MessageValue* arguments,
                            std::size_t count) {
    if (count < method.argumentCount)
        raiseMissingArguments(method, receiver, count);
    MessageValue result;
    if (fits(method, arguments)) {
        method.generic(method, receiver, arguments, result);
        return result;
    }
    std::array<MessageValue, 14> converted;
    for (unsigned i = 0; i < method.argumentCount; ++i)
        converted[i] = argumentFor(method, receiver, i, arguments[i]);
    method.generic(method, receiver, converted.data(), result);
    return result;
}

}  // namespace tovi::detail
