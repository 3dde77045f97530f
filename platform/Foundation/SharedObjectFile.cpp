#include <ToviFoundationKit/Foundation/SharedObjectFile_p.h>

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <vector>

namespace tovi {

namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Section = ElfW(Shdr);
using Address = std::uint64_t;

constexpr unsigned char ownClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

/// The file as the loader lays it out in memory.
class Image {
public:
    explicit Image(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}

    const char* fault() {
        if (bytes_.size() < sizeof(Header))
            return "it is too short";
        const auto header = record<Header>(0);
        if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_type != ET_DYN)
            return "it is no shared object";
        if (header.e_ident[EI_CLASS] != ownClass || header.e_phentsize != sizeof(Segment))
            return "it is made for another machine";
        // Linkers write the section headers last, so they are gone from a file that was cut off.
        if (!holds(header.e_phoff, std::uint64_t{header.e_phnum} * sizeof(Segment)) ||
            !holds(header.e_shoff, std::uint64_t{header.e_shnum} * sizeof(Section)))
            return "it is cut off";
        for (unsigned i = 0; i < header.e_phnum; ++i)
            segments_.push_back(record<Segment>(header.e_phoff + i * sizeof(Segment)));
        if (!std::ranges::all_of(segments_, [&](const Segment& each) { return holds(each.p_offset, each.p_filesz); }))
            return "it is cut off";
        return loadedInOrder() && othersAreLoaded() ? nullptr : "its segments are damaged";
    }

    /// Whether the addresses lie in one segment that is loaded with these permissions.
    bool isLoaded(Address address, std::uint64_t length, unsigned permissions = PF_R) const noexcept {
        return std::ranges::any_of(segments_, [=](const Segment& each) {
            return each.p_type == PT_LOAD && (each.p_flags & permissions) == permissions && address >= each.p_vaddr &&
                   contains(each.p_memsz, address - each.p_vaddr, length);
        });
    }

    /// What the file has at an address; nothing where that does not come from the file.
    template <class T> std::optional<T> at(Address address) const noexcept {
        for (const Segment& each : segments_)
            if (each.p_type == PT_LOAD && address >= each.p_vaddr &&
                contains(each.p_filesz, address - each.p_vaddr, sizeof(T)))
                return record<T>(each.p_offset + (address - each.p_vaddr));
        return std::nullopt;
    }

    const std::vector<Segment>& segments() const noexcept { return segments_; }

private:
    static bool contains(std::uint64_t size, std::uint64_t offset, std::uint64_t length) noexcept {
        return offset <= size && length <= size - offset;
    }
    bool holds(std::uint64_t offset, std::uint64_t length) const noexcept {
        return contains(bytes_.size(), offset, length);
    }
    template <class T> T record(std::uint64_t offset) const noexcept {
        T result;
        std::memcpy(&result, bytes_.data() + offset, sizeof result);
        return result;
    }

    // The loader reserves memory from the first to the last and puts each in its place, whatever is there.
    bool loadedInOrder() const noexcept {
        Address end = 0;
        for (const Segment& each : segments_) {
            if (each.p_type != PT_LOAD)
                continue;
            if (each.p_vaddr < end || each.p_filesz > each.p_memsz || each.p_vaddr + each.p_memsz < each.p_vaddr)
                return false;
            end = each.p_vaddr + each.p_memsz;
        }
        return end != 0;
    }

    bool othersAreLoaded() const noexcept {
        return std::ranges::all_of(segments_, [&](const Segment& each) {
            const auto length = each.p_type == PT_TLS ? each.p_filesz : each.p_memsz;
            return length == 0 || each.p_type == PT_GNU_STACK || isLoaded(each.p_vaddr, length);
        });
    }

    std::span<const std::byte> bytes_;
    std::vector<Segment> segments_;
};

/// What the loader follows from the dynamic section on.
class DynamicSection {
public:
    explicit DynamicSection(const Image& image) noexcept : image_(image) {}

    const char* fault() {
        if (!readEntries() || !tablesAreLoaded())
            return "its dynamic section is damaged";
        if (!followNeeded(value(DT_VERNEED)) || !followDefined(value(DT_VERDEF)) || !symbolsAreSound())
            return "its symbol table is damaged";
        return relocationsAreSound<ElfW(Rela)>(DT_RELA, DT_RELASZ) &&
                       relocationsAreSound<ElfW(Rel)>(DT_REL, DT_RELSZ) &&
                       (value(DT_PLTREL) == DT_RELA ? relocationsAreSound<ElfW(Rela)>(DT_JMPREL, DT_PLTRELSZ)
                                                    : relocationsAreSound<ElfW(Rel)>(DT_JMPREL, DT_PLTRELSZ))
                   ? nullptr
                   : "its relocations are damaged";
    }

private:
    bool has(std::int64_t tag) const { return values_.contains(tag); }
    std::uint64_t value(std::int64_t tag) const {
        const auto found = values_.find(tag);
        return found == values_.end() ? 0 : found->second;
    }

    bool readEntries() {
        const auto section = std::ranges::find(image_.segments(), ElfW(Word){PT_DYNAMIC}, &Segment::p_type);
        if (section == image_.segments().end())
            return false;
        for (Address address = section->p_vaddr;; address += sizeof(ElfW(Dyn))) {
            const auto entry = image_.at<ElfW(Dyn)>(address);
            if (!entry || entry->d_tag == DT_NULL)
                return entry && namesAreSound();
            values_[entry->d_tag] = entry->d_un.d_val;
            if (entry->d_tag == DT_NEEDED)
                names_.push_back(entry->d_un.d_val);
        }
    }

    bool isName(std::uint64_t offset) const { return offset < value(DT_STRSZ); }

    bool namesAreSound() {
        for (const std::int64_t tag : {DT_SONAME, DT_RPATH, DT_RUNPATH})
            names_.push_back(value(tag));
        return image_.at<char>(value(DT_STRTAB) + value(DT_STRSZ) - 1) == '\0' &&
               std::ranges::all_of(names_, [&](std::uint64_t offset) { return isName(offset); });
    }

    bool tablesAreLoaded() const {
        constexpr struct {
            std::int64_t address, size;
        } tables[] = {{DT_STRTAB, DT_STRSZ},
                      {DT_RELA, DT_RELASZ},
                      {DT_REL, DT_RELSZ},
                      {DT_JMPREL, DT_PLTRELSZ},
                      {DT_INIT_ARRAY, DT_INIT_ARRAYSZ},
                      {DT_FINI_ARRAY, DT_FINI_ARRAYSZ},
                      {DT_SYMTAB, DT_SYMENT},
                      {DT_PLTGOT, DT_NULL}};
        constexpr struct {
            std::int64_t tag;
            std::uint64_t size;
        } entries[] = {
            {DT_SYMENT, sizeof(ElfW(Sym))}, {DT_RELAENT, sizeof(ElfW(Rela))}, {DT_RELENT, sizeof(ElfW(Rel))}};
        return has(DT_STRTAB) && has(DT_SYMTAB) &&
               std::ranges::all_of(tables,
                                   [&](const auto& table) {
                                       return !has(table.address) ||
                                              image_.isLoaded(value(table.address), value(table.size));
                                   }) &&
               std::ranges::all_of(
                   entries, [&](const auto& entry) { return !has(entry.tag) || value(entry.tag) == entry.size; }) &&
               std::ranges::all_of(std::initializer_list<std::int64_t>{DT_INIT, DT_FINI}, [&](std::int64_t tag) {
                   return !has(tag) || image_.isLoaded(value(tag), 1, PF_R | PF_X);
               });
    }

    bool symbolsAreSound() const {
        const std::optional<std::uint64_t> count = symbolCount();
        for (std::uint64_t i = 0; i < count.value_or(0); ++i)
            if (!isSymbol(i))
                return false;
        return count.has_value();
    }

    std::optional<std::uint64_t> symbolCount() const {
        if (has(DT_GNU_HASH))
            return symbolsIn(value(DT_GNU_HASH));
        struct OlderTable {
            std::uint32_t buckets, symbols;
        };
        const auto table = image_.at<OlderTable>(value(DT_HASH));
        return has(DT_HASH) && table ? std::optional<std::uint64_t>(table->symbols) : std::nullopt;
    }

    bool isSymbol(std::uint64_t index) const {
        const auto symbol = image_.at<ElfW(Sym)>(value(DT_SYMTAB) + index * sizeof(ElfW(Sym)));
        if (!symbol || !isName(symbol->st_name))
            return false;
        const auto version = image_.at<std::uint16_t>(value(DT_VERSYM) + index * sizeof(std::uint16_t));
        return !has(DT_VERSYM) || (version && (*version & 0x7FFFU) <= lastVersion_);
    }

    /// How many symbols the hash table knows of. The last is at the end of the last bucket's chain, which a set lowest
    /// bit marks. Where all are imported it knows none.
    std::optional<std::uint64_t> symbolsIn(Address table) const {
        struct Head {
            std::uint32_t buckets, firstSymbol, bloomWords, shift;
        };
        const auto head = image_.at<Head>(table);
        if (!head || head->buckets == 0 || !std::has_single_bit(head->bloomWords))
            return std::nullopt;
        const Address buckets = table + sizeof(Head) + std::uint64_t{head->bloomWords} * sizeof(ElfW(Addr));
        std::uint32_t last = 0;
        for (std::uint64_t i = 0; i < head->buckets; ++i) {
            const auto first = image_.at<std::uint32_t>(buckets + i * sizeof last);
            if (!first || (*first && *first < head->firstSymbol))
                return std::nullopt;
            last = std::max(last, *first);
        }
        const Address chains = buckets + std::uint64_t{head->buckets} * sizeof last;
        std::uint64_t symbol = last;
        for (std::uint32_t link = last ? 0 : 1; !(link & 1); ++symbol) {
            const auto next = image_.at<std::uint32_t>(chains + (symbol - head->firstSymbol) * sizeof last);
            if (!next)
                return std::nullopt;
            link = *next;
        }
        return symbol;
    }

    // Both are lists in which each record tells how far the next one is.
    bool followNeeded(Address address) {
        for (std::uint64_t step = address; step; address += step) {
            const auto library = image_.at<ElfW(Verneed)>(address);
            if (!library || !isName(library->vn_file))
                return false;
            Address detail = address + library->vn_aux;
            for (std::uint64_t further = 1; further; detail += further) {
                const auto version = image_.at<ElfW(Vernaux)>(detail);
                if (!version || !isName(version->vna_name))
                    return false;
                lastVersion_ = std::max(lastVersion_, version->vna_other & 0x7FFFU);
                further = version->vna_next;
            }
            step = library->vn_next;
        }
        return true;
    }

    bool followDefined(Address address) {
        for (std::uint64_t step = address; step; address += step) {
            const auto version = image_.at<ElfW(Verdef)>(address);
            const auto detail = version ? image_.at<ElfW(Verdaux)>(address + version->vd_aux) : std::nullopt;
            if (!detail || !isName(detail->vda_name))
                return false;
            lastVersion_ = std::max(lastVersion_, version->vd_ndx & 0x7FFFU);
            step = version->vd_next;
        }
        return true;
    }

    template <class Relocation> bool relocationsAreSound(std::int64_t table, std::int64_t size) const {
        constexpr unsigned symbolShift = sizeof(void*) == 8 ? 32 : 8;
        for (std::uint64_t offset = 0; offset < value(size); offset += sizeof(Relocation)) {
            const auto each = image_.at<Relocation>(value(table) + offset);
            if (!each || !isSymbol(std::uint64_t{each->r_info} >> symbolShift) ||
                (each->r_info && !image_.isLoaded(each->r_offset, sizeof(void*), PF_R | PF_W)))
                return false;
        }
        return true;
    }

    const Image& image_;
    std::map<std::int64_t, std::uint64_t> values_;
    std::vector<std::uint64_t> names_;
    unsigned lastVersion_ = 1;
};

}  // namespace

const char* faultOfSharedObject(std::span<const std::byte> file) {
    Image image(file);
    const char* const fault = image.fault();
    return fault ? fault : DynamicSection(image).fault();
}

}  // namespace tovi
