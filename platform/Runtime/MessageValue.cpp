#include <ToviFoundationKit/Runtime/MessageValue.h>

#include <string_view>

#include <ToviFoundationKit/Runtime/Box.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NumberConversion_p.h>

namespace tovi {

id MessageValue::boxed() const {
    switch (kind_) {
        case ValueKind::Void:
            return nullptr;
        case ValueKind::Object:
            return object_;
        case ValueKind::Bool:
            return NSNumber::numberWithBool(raw_.boolean);
        case ValueKind::Integer:
            return detail::boxInteger(encoding_, raw_.integer);
        case ValueKind::Real:
            return *encoding_ == 'f' ? box(static_cast<float>(raw_.real)) : box(raw_.real);
        case ValueKind::Selector:
            return raw_.selector ? id(box(raw_.selector.name())) : nullptr;
        case ValueKind::Range:
            return box(raw_.range);
        case ValueKind::Point:
            return box(raw_.point);
        case ValueKind::Size:
            return box(raw_.size);
        case ValueKind::Rect:
            return box(raw_.rect);
        case ValueKind::Function:
        case ValueKind::Pointer:
            break;
    }
    NSException::raise(NSInvalidArgumentException, u"a value of type %s cannot be an object", encoding_);
}

bool MessageValue::isNumber() const noexcept {
    return kind_ == ValueKind::Bool || kind_ == ValueKind::Integer || kind_ == ValueKind::Real;
}

std::int64_t MessageValue::integerFor(const char* encoding) const noexcept {
    switch (kind_) {
        case ValueKind::Bool:
            return raw_.boolean;
        case ValueKind::Real:
            return truncated(raw_.real, *encoding);
        default:
            return narrowed(raw_.integer, *encoding);
    }
}

double MessageValue::realFor(const char* encoding) const noexcept {
    double value = raw_.real;
    if (kind_ != ValueKind::Real) {
        const bool isUnsigned = *encoding_ == 'Q' || *encoding_ == 'L';
        const std::int64_t integer = integerFor(isUnsigned ? "Q" : "q");
        value = isUnsigned ? static_cast<double>(static_cast<std::uint64_t>(integer)) : static_cast<double>(integer);
    }
    return *encoding == 'f' ? double{static_cast<float>(value)} : value;
}

MessageValue MessageValue::zero(ValueKind kind, const char* encoding) noexcept {
    MessageValue value(kind, encoding);
    switch (kind) {
        case ValueKind::Void:
        case ValueKind::Object:
        case ValueKind::Integer:
            break;
        case ValueKind::Bool:
            value.set(false);
            break;
        case ValueKind::Real:
            value.set(0.0);
            break;
        case ValueKind::Selector:
            value.set(tovi::Selector());
            break;
        case ValueKind::Function:
            value.set(Function());
            break;
        case ValueKind::Pointer:
            value.set<void*>(nullptr);
            break;
        case ValueKind::Range:
            value.set(NSRange());
            break;
        case ValueKind::Point:
            value.set(NSPoint());
            break;
        case ValueKind::Size:
            value.set(NSSize());
            break;
        case ValueKind::Rect:
            value.set(NSRect());
            break;
    }
    return value;
}

std::optional<MessageValue> MessageValue::convertedIfPossible(ValueKind kind, const char* encoding) const {
    if (kind == kind_ && !isNumber())
        return *this;
    const bool isNil = kind_ == ValueKind::Object && !object_;
    if (kind_ == ValueKind::Void || (isNil && kind == ValueKind::Selector))
        return zero(kind, encoding);
    MessageValue result(kind, encoding);
    if (isNumber() && kind == ValueKind::Integer) {
        result.set(integerFor(encoding));
    } else if (isNumber() && kind == ValueKind::Real) {
        result.set(realFor(encoding));
    } else if (isNumber() && kind == ValueKind::Bool) {
        result.set(kind_ == ValueKind::Bool   ? raw_.boolean
                   : kind_ == ValueKind::Real ? raw_.real != 0
                                              : raw_.integer != 0);
    } else if (kind == ValueKind::Object && kind_ != ValueKind::Function && kind_ != ValueKind::Pointer) {
        result.set(boxed());
    } else if (const auto* text = dynamic_cast<const NSString*>(object_.get()); text && kind == ValueKind::Selector) {
        result.set(tovi::Selector::named(text->UTF8String()));
    } else if (const auto* value = dynamic_cast<const NSValue*>(object_.get())) {
        return value->messageValue().convertedIfPossible(kind, encoding);
    } else {
        return std::nullopt;
    }
    return result;
}

MessageValue MessageValue::converted(ValueKind kind, const char* encoding) const {
    if (auto result = convertedIfPossible(kind, encoding))
        return *std::move(result);
    if (kind_ == ValueKind::Object)
        NSException::raise(NSInvalidArgumentException, u"%@ cannot be converted to type %s", object_, encoding);
    NSException::raise(NSInvalidArgumentException, u"a value of type %s cannot be converted to type %s", encoding_,
                       encoding);
}

}  // namespace tovi
