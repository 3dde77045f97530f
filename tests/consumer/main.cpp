#include <iostream>

#include <ToviFoundationKit/ToviFoundationKit.h>

int main() {
    const auto list = tovi::NSArray::of(1, u"two", 3.0);
    std::cout << *reversedArray(list)->description() << '\n';
}
