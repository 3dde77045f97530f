#pragma once

#include <ToviFoundationKit/Runtime/Cast.h>
#include <ToviFoundationKit/Runtime/NSString.h>

namespace tovi {

/// What an object writes its fields to and reads them from. There are two forms: a keyed coder (NSKeyedArchiver,
/// NSKeyedUnarchiver) stores each field under a key, to be read back in any order; an unkeyed one (NSArchiver,
/// NSUnarchiver) stores objects in a row, to be read back in that order. Asking one form for an operation of the other,
/// or a coder that reads to write, raises NSInvalidArgumentException.
///
/// Strings, numbers, other values, NSNull, data, dates, index sets, lists, dictionaries, sets and class objects take
/// part in archives by themselves. An object of any other class does when its class, or one above it, answers two
/// messages and can be made without arguments:
///
///     const Additions<Account> additions{
///         instance<&Account::encodeWithCoder>("encodeWithCoder:"),  // void encodeWithCoder(NSCoder& coder) const
///         instance<&Account::initWithCoder>("initWithCoder:"),      // void initWithCoder(NSCoder& coder)
///     };
///
/// An object is archived once, however often and from wherever it is referred to, and may refer to one that refers back
/// to it. `initWithCoder` is sent to a new instance after all objects that it refers to are complete, except for those
/// that lead back to it and dictionaries and sets whose keys contain objects of a host's: keep these, do not ask them
/// anything yet.
///
/// When an archive turns out to be bad half-way, nothing of it is kept. As the objects made so far may hold each other
/// in circles, their lists, dictionaries and sets are emptied, and those that respond to it are sent
/// `breakReferenceCycles`, to let go of what they have decoded.
class TOVI_EXPORT NSCoder : public NSObject {
    TOVI_DECLARE_CLASS(NSCoder)

public:
    virtual bool allowsKeyedCoding() const noexcept = 0;

    /// The object's own fields are written later, not within the call; until then it is retained. Nil is stored, too.
    /// Using a key twice for one object raises NSInvalidArgumentException.
    virtual void encodeObject_forKey(const NSObject* object, const NSString& key);
    virtual void encodeInteger_forKey(NSInteger value, const NSString& key);
    virtual void encodeDouble_forKey(double value, const NSString& key);
    virtual void encodeBool_forKey(bool value, const NSString& key);

    /// Whether something, nil included, was stored under the key.
    virtual bool containsValueForKey(const NSString& key) const;
    /// nil, 0 or false when nothing was stored under the key; when it was something else (a number where an object is
    /// asked for, an integer for a double) they raise NSInvalidUnarchiveOperationException.
    virtual id decodeObjectForKey(const NSString& key);
    virtual NSInteger decodeIntegerForKey(const NSString& key);
    virtual double decodeDoubleForKey(const NSString& key);
    virtual bool decodeBoolForKey(const NSString& key);
    /// The same as an object of class T; one of another class raises NSInvalidUnarchiveOperationException.
    template <class T> RefPtr<T> decodeForKey(const NSString& key) { return expected<T>(decodeObjectForKey(key)); }

    /// Stores an object, or nil, behind those that the object being archived has stored already.
    virtual void encodeObject(const NSObject* object);
    /// The next object of the row. Raises NSInvalidUnarchiveOperationException when nothing is left.
    virtual id decodeObject();
    template <class T> RefPtr<T> decode() { return expected<T>(decodeObject()); }

protected:
    NSCoder() noexcept = default;
    ~NSCoder() override = default;

private:
    template <class T> static RefPtr<T> expected(id object) {
        if (object && !as<T>(object.get())) [[unlikely]]
            raiseUnexpectedClass(*object, T::classObject());
        return adoptPtr(static_cast<T*>(object.leak()));
    }
    [[noreturn]] static void raiseUnexpectedClass(const NSObject& object, const Class& expected);
    [[noreturn]] void raiseWrongForm(std::string_view operation) const;
};

inline constexpr std::u16string_view ArchiveErrorDomain = u"ToviArchiveErrorDomain";

/// The codes of errors in that domain; the text says what is wrong with which byte or object.
enum ArchiveError : NSInteger {
    ArchiveErrorDamaged = 1,       ///< not an archive, one of the other form, cut off, or inconsistent
    ArchiveErrorNewer = 2,         ///< written by a newer version of the library, in a format that this one cannot read
    ArchiveErrorUnknownClass = 3,  ///< has objects of a class that this process does not know, or cannot unarchive
    ArchiveErrorRefused = 4        ///< `initWithCoder:`, or a key's `copy`, `hash` or `isEqual:`, raised an exception
};

}  // namespace tovi
