#pragma once

#include <ToviFoundationKit/ToviFoundationKit.h>

/// What predicates are asked about: objects with values of every kind, and with other objects.
class Letter : public tovi::NSObject {
    TOVI_CLASS(Letter, tovi::NSObject)

public:
    static tovi::Ref<Letter> make(std::u16string_view sender, tovi::NSInteger size, double date = 0,
                                  tovi::Ref<tovi::NSArray> answers = tovi::NSArray::array()) {
        return tovi::adopt(*new Letter(sender, size, date, std::move(answers)));
    }

    tovi::Ref<tovi::NSString> sender() const { return sender_; }
    tovi::NSInteger size() const { return size_; }
    tovi::Ref<tovi::NSDate> date() const { return date_; }
    tovi::Ref<tovi::NSArray> answers() const { return answers_; }
    tovi::Ref<tovi::NSArray> tags() const { return tovi::NSArray::of(u"work", u"urgent", sender_->length()); }
    tovi::id note() const { return nullptr; }
    bool isRead() const { return size_ > 10; }
    tovi::Ref<tovi::NSString> quoted(const tovi::NSString& mark) const {
        return tovi::NSString::stringWithFormat(u"%@%@%@", mark, sender_, mark);
    }
    bool isLargerThan(tovi::NSInteger size) const { return size_ > size; }

private:
    Letter(std::u16string_view sender, tovi::NSInteger size, double date, tovi::Ref<tovi::NSArray> answers)
        : sender_(tovi::box(sender)),
          size_(size),
          date_(tovi::NSDate::dateWithTimeIntervalSinceReferenceDate(date)),
          answers_(std::move(answers)) {}

    tovi::Ref<tovi::NSString> sender_;
    tovi::NSInteger size_;
    tovi::Ref<tovi::NSDate> date_;
    tovi::Ref<tovi::NSArray> answers_;
};

inline const tovi::Additions<Letter> letterAdditions{
    tovi::instance<&Letter::sender>("sender"),
    tovi::instance<&Letter::size>("size"),
    tovi::instance<&Letter::date>("date"),
    tovi::instance<&Letter::answers>("answers"),
    tovi::instance<&Letter::tags>("tags"),
    tovi::instance<&Letter::note>("note"),
    tovi::instance<&Letter::isRead>("isRead"),
    tovi::instance<&Letter::quoted>("quoted:"),
    tovi::instance<&Letter::isLargerThan>("isLargerThan:"),
};
