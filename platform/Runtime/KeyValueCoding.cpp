#include <ToviFoundationKit/Runtime/Message.h>
#include <ToviFoundationKit/Runtime/NSException.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

id NSObject::valueForKey(const NSString& key) {
    const Method* accessor = isa().accessorForKey(key);
    if (!accessor)
        NSException::raise(
            NSUndefinedKeyException,
            u"[<%@ %p> valueForUndefinedKey:]: this class is not key value coding-compliant for the key %@.", isa(),
            static_cast<const void*>(this), key);
    return detail::sendResolved<id>(*accessor, *this);
}

id NSObject::valueForKeyPath(const NSString& path) {
    id value = this;
    std::u16string_view rest = path.view();
    while (value) {
        // What an operator means is for the collection to say that it stands behind.
        if (rest.starts_with(u'@') && value.get() != this)
            return value->valueForKeyPath(NSString::stringWithCharacters(rest));
        const std::size_t dot = rest.find(u'.');
        value = value->valueForKey(NSString::stringWithCharacters(rest.substr(0, dot)));
        if (dot == rest.npos)
            return value;
        rest.remove_prefix(dot + 1);
    }
    return nullptr;
}

}  // namespace tovi
