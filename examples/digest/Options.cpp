#include <Options.h>

#include <charconv>
#include <optional>
#include <span>
#include <stdexcept>
#include <utility>

namespace digest {

namespace {

/// The words of the command line, one after the other. "--name=value" is the same as "--name value".
class Words {
public:
    explicit Words(std::span<char* const> words) : words_(words) {}

    bool next() {
        value_.reset();
        if (words_.empty())
            return false;
        word_ = words_.front();
        words_ = words_.subspan(1);
        if (const std::size_t sign = word_.find('='); word_.starts_with("--") && sign != word_.npos) {
            value_ = word_.substr(sign + 1);
            word_ = word_.substr(0, sign);
        }
        return true;
    }

    std::string_view word() const { return word_; }
    bool hasUnusedValue() const { return value_.has_value(); }

    std::string_view value() {
        if (value_)
            return *std::exchange(value_, std::nullopt);
        if (words_.empty())
            throw std::invalid_argument(std::string(word_) + " needs a value");
        const std::string_view value = words_.front();
        words_ = words_.subspan(1);
        return value;
    }

    template <class T> T number(T least) {
        const std::string name(word_);
        const std::string_view text = value();
        T number{};
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size() || number < least)
            throw std::invalid_argument(name + " needs a number from " + std::to_string(least) + " on, not \"" +
                                        std::string(text) + '"');
        return number;
    }

private:
    std::span<char* const> words_;
    std::string_view word_;
    std::optional<std::string_view> value_;
};

}  // namespace

Options Options::parse(int count, char* const* arguments) {
    Options options;
    Words words(std::span(arguments, static_cast<std::size_t>(count)).subspan(count > 0 ? 1 : 0));
    bool optionsEnded = false;
    while (words.next()) {
        const std::string_view word = words.word();
        if (optionsEnded || word == "-" || !word.starts_with('-'))
            options.paths.emplace_back(word);
        else if (word == "--")
            optionsEnded = true;
        else if (word == "--top")
            options.top = words.number<std::size_t>(1);
        else if (word == "--prefix")
            options.prefix = words.value();
        else if (word == "--seed")
            options.seed = words.number<unsigned>(0);
        else if (word == "--since")
            options.since = words.number<unsigned>(0);
        else if (word == "--where")
            options.where = words.value();
        else if (word == "--now")
            options.now = words.value();
        else if (word == "--width")
            options.width = words.number<int>(40);
        else if (word == "--mboxo")
            options.quoting = MboxQuoting::mboxo;
        else if (word == "--help" || word == "-h")
            options.wantsHelp = true;
        else
            throw std::invalid_argument("there is no option " + std::string(word));
        if (words.hasUnusedValue() && word.starts_with("--"))
            throw std::invalid_argument(std::string(word) + " takes no value");
    }
    if (options.paths.empty() && !options.wantsHelp)
        throw std::invalid_argument("name at least one mailbox");
    return options;
}

std::string_view Options::help() {
    return R"(Usage: digest [OPTION...] MAILBOX...

Reads mailboxes (mbox files; "-" is standard input) and prints a digest of them: the
latest messages by day, a calendar, who wrote most, from where, what about, who answered
whom, the people that mailboxes have in common, subjects with a prefix, and a random
sample. Days and times are those of the time zone here (TZ), in the language here (LANG).

  --since N      only messages of today and the N days before
  --where TEXT   only messages for which the predicate is true, for instance
                   'sender.name CONTAINS[cd] "zoe" AND date >= $-7_start'
                   'subject MATCHES ".*[0-9]+.*" AND NOT opening CONTAINS "http"'
                 A message has number, subject, topic, date, opening, sender.name,
                 sender.address, messageID, references and notes. $-7_start is the
                 beginning of the day a week ago, $0_end the end of today.
  --now TIME     take "2024-03-15" or "2024-03-15 18:30" for the present
  --top N        print at most N rows of each list, 2 N of the outline of domains (10)
  --prefix TEXT  look for subjects that begin with TEXT ("Re:")
  --seed N       another random sample for another number (1)
  --width N      columns to print, 40 or more (those of the terminal, else 80)
  --mboxo        the mailboxes quote ">From " but not ">>From " (mboxrd quotes both)
  -h, --help     print this

The exit status is 0 when all mailboxes were read without trouble, 1 when one could not
be read or was damaged, 2 when the command line was wrong.
)";
}

}  // namespace digest
