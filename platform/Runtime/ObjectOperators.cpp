#include <ToviFoundationKit/Runtime/ObjectOperators.h>

#include <ostream>

#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

namespace detail {

bool equalOrBothNil(const NSObject* a, const NSObject* b) { return a == b || (a && a->isEqual(b)); }

void print(std::ostream& out, const NSObject* object) {
    if (object)
        out << object->description()->UTF8String();
    else
        out << "(null)";
}

}  // namespace detail

std::ostream& operator<<(std::ostream& out, const NSRange& range) {
    return out << '{' << range.location << ", " << range.length << '}';
}
std::ostream& operator<<(std::ostream& out, const NSPoint& point) {
    return out << '{' << point.x << ", " << point.y << '}';
}
std::ostream& operator<<(std::ostream& out, const NSSize& size) {
    return out << '{' << size.width << ", " << size.height << '}';
}
std::ostream& operator<<(std::ostream& out, const NSRect& rect) {
    return out << '{' << rect.origin << ", " << rect.size << '}';
}

}  // namespace tovi
