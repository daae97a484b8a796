/// Storage of the text type: sixteen UTF-16 units in the object, or a shared block on the heap.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <atomic>
#include <cstdint>
#include <cstring>

/// The head of a heap block: the count of its owners, then the text and a terminating zero.
///
/// Thread safety: the count is atomic, so owners on different threads may add and release at
/// once. The text and the two lengths change only while the block has one owner.
struct alignas(16) TLongStringHeader
{
    std::atomic<std::int32_t> references; ///< Owners of the block, 1 or more.
    std::int32_t length;                  ///< Units of text, the terminating zero not counted.
    std::int32_t capacity;                ///< Units that fit, the terminating zero not counted.

    char16_t* text() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
    char16_t const* text() const noexcept { return reinterpret_cast<char16_t const*>(this + 1); }

    /// Units that fit behind a text of `used` units.
    std::uint32_t room(std::uint32_t used) const noexcept
    {
        return static_cast<std::uint32_t>(capacity) - used;
    }

    /// More than one owner? The acquire pairs with the release of the owner that left last, so
    /// what that owner read is over before the one that stays writes.
    bool isShared() const noexcept { return references.load(std::memory_order_acquire) != 1; }

    void addReference() noexcept { references.fetch_add(1, std::memory_order_relaxed); }

    /// Gives up one ownership; with the last one the block is gone.
    void release() noexcept
    {
        if (!isShared() || references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            destroy(this);
        }
    }

    /// A block with room for at least `capacity` units, owned once, its length not set.
    /// Throws: `std::bad_alloc`.
    KORSYS_EXPORT static TLongStringHeader* create(std::int64_t capacity);

    /// The block with room for at least `capacity` units, perhaps elsewhere in memory.
    /// Requires: one owner, who drops the old pointer. Throws: `std::bad_alloc`; nothing changed.
    KORSYS_EXPORT static TLongStringHeader* resized(TLongStringHeader* header,
                                                    std::int64_t capacity);

    /// A block owned once that holds the text of `header`, which is `length` units long, and has
    /// room for `n` more and some besides. One ownership of `header` goes over to it.
    /// Throws: as `TStringManager::resize`; nothing changed.
    KORSYS_EXPORT static TLongStringHeader* grown(TLongStringHeader* header, std::uint32_t length,
                                                  int n);

    /// The same for a text of up to 16 units that is in no block.
    KORSYS_EXPORT static TLongStringHeader* grown(char16_t const (&units)[16], std::uint32_t length,
                                                  int n);

private:
    /// Frees a block that nobody owns, or keeps it for the next text of this thread: up to 8 of
    /// each size up to 512 bytes, until the thread ends.
    KORSYS_EXPORT static void destroy(TLongStringHeader* header) noexcept;
};

/// Holds the units of a text. A text of up to 14 units lies in the object; a longer one lies in a
/// heap block that copies share until one of them changes.
///
/// The last of the sixteen units tells the two forms apart: it is the length (0 to 14) in the
/// short form, and negative when read as a signed number in the long form, which begins with a
/// pointer to the block. Shrinking a long text keeps its block, so a short text may be in either
/// form.
///
/// Thread safety: one object may be read from several threads; a write needs it alone. Objects
/// that share a block count as different objects.
class KORSYS_EXPORT TStringManager
{
public:
    static constexpr int kShortCapacity = 14;
    static constexpr int kMaxLength = 2147483647 - 63; ///< 2^31 - 64 units.

    TStringManager() noexcept { makeEmpty(); }

    TStringManager(TStringManager const& other) noexcept { share(other); }

    TStringManager(TStringManager&& other) noexcept
    {
        std::memcpy(m_units, other.m_units, sizeof(m_units));
        other.makeEmpty();
    }

    ~TStringManager()
    {
        if (isLong()) {
            header()->release();
        }
    }

    /// Takes up to 14 units into the object, so that no short text keeps a long block alive.
    TStringManager& operator=(TStringManager const& other) noexcept
    {
        if (this != &other) {
            TStringManager copy;
            if (other.isLong() && other.length() <= kShortCapacity) {
                copy.assignShort(other.constData(), other.length());
            } else {
                copy.share(other);
            }
            swap(copy);
        }
        return *this;
    }

    /// Moving an object into itself changes nothing.
    TStringManager& operator=(TStringManager&& other) noexcept
    {
        TStringManager moved(static_cast<TStringManager&&>(other));
        swap(moved);
        return *this;
    }

    void swap(TStringManager& other) noexcept
    {
        char16_t units[kUnits];
        std::memcpy(units, m_units, sizeof(m_units));
        std::memmove(m_units, other.m_units, sizeof(m_units)); // of itself, perhaps
        std::memcpy(other.m_units, units, sizeof(m_units));
    }

    int length() const noexcept
    {
        return isLong() ? static_cast<int>(longLength()) : m_units[kFormUnit];
    }

    /// The units, with a zero after the last. Valid until the object changes or dies.
    char16_t const* constData() const noexcept { return isLong() ? header()->text() : m_units; }

    /// Units that fit without another block.
    int capacity() const noexcept { return isLong() ? header()->capacity : kShortCapacity; }

    char16_t const* data() const noexcept { return constData(); }

    /// The units for writing, on a block of the object's own. The pointer is good until the next
    /// change or copy of the object.
    /// Throws: `std::bad_alloc`.
    char16_t* data()
    {
        if (isLong() && header()->isShared()) {
            detach();
        }
        return isLong() ? header()->text() : m_units;
    }

    /// Makes the text exactly `n` units long (a negative `n` counts as 0) and returns the units
    /// for writing. The first units stay, new ones hold anything, and a zero follows the last.
    /// Throws: `StringException` with id AutoGen_0xC83B3D89 when `n` is above `kMaxLength`,
    /// `std::bad_alloc`; the object is then unchanged.
    char16_t* resize(int n);

    /// As `resize`, but the old units need not survive: for writing a whole new text.
    char16_t* resizeForOverwrite(int n)
    {
        if (isLong() || n < 0 || n > kShortCapacity) {
            return resizeForOverwriteSlowly(n);
        }
        setShortLength(n);
        return m_units;
    }

    /// Adds `n` units that hold anything at the end and returns the first of them. Room doubles
    /// or grows by half at a time, so many small additions cost little each.
    /// Requires: `n` is not negative.
    char16_t* extend(int n)
    {
        if (!isLong() && n <= kShortCapacity - m_units[kFormUnit]) {
            int const oldLength = m_units[kFormUnit];
            setShortLength(oldLength + n);
            return m_units + oldLength;
        }
        auto const [block, oldLength] = makeRoom(n);
        return setLongLength(block, oldLength + static_cast<std::uint32_t>(n)) + oldLength;
    }

    /// Adds one unit at the end.
    void extendWith(char16_t c)
    {
        if (!isLong() && m_units[kFormUnit] < kShortCapacity) {
            int const oldLength = m_units[kFormUnit];
            m_units[kFormUnit] = static_cast<char16_t>(oldLength + 1);
            putLast(m_units + oldLength, c);
            return;
        }
        auto const [block, oldLength] = makeRoom(1);
        storeLongLength(block, oldLength + 1);
        putLast(block->text() + oldLength, c);
    }

    /// Makes room for `n` units in all. Up to 14 there always is.
    void reserve(int n);

    /// Frees room that the text does not need.
    void squeeze();

    void clear() noexcept
    {
        if (isLong()) {
            header()->release();
        }
        makeEmpty();
    }

    bool isLong() const noexcept { return static_cast<std::int16_t>(m_units[kFormUnit]) < 0; }

    /// Does another object own the same block?
    bool isShared() const noexcept { return isLong() && header()->isShared(); }

    /// Does `p` point into this object's text or just behind it?
    bool holds(char16_t const* p) const noexcept
    {
        auto const begin = reinterpret_cast<std::uintptr_t>(constData());
        auto const offset = reinterpret_cast<std::uintptr_t>(p) - begin;
        return offset <= static_cast<std::uintptr_t>(length()) * sizeof(char16_t);
    }

protected:
    /// Takes `n` units, 0 to 14, of an object that is in the short form.
    void assignShort(char16_t const* units, int n) noexcept
    {
        copyFewUnits(m_units, units, n);
        setShortLength(n);
    }

    /// Adds `n` units, which are not the object's own, to a long text whose block has no other
    /// owner and has room for them. Returns whether it did.
    bool appendInBlock(char16_t const* units, int n) noexcept
    {
        TLongStringHeader* const block = header();
        std::uint32_t const oldLength = longLength();
        if (block->room(oldLength) < static_cast<std::uint32_t>(n) || block->isShared()) {
            return false;
        }
        copyUnits(setLongLength(block, oldLength + static_cast<std::uint32_t>(n)) + oldLength,
                  units, n);
        return true;
    }

    /// Gives up the block of a long text; the units of the short form are then to be written.
    void becomeShort() noexcept
    {
        if (isLong()) {
            clear();
        }
    }

    /// Takes a new block for `n` units, more than 14, and returns them for writing.
    /// Requires: an object in the short form.
    char16_t* becomeLong(int n)
    {
        setHeader(TLongStringHeader::create(n));
        return setLongLength(header(), static_cast<std::uint32_t>(n));
    }

    /// The units of an object in the short form, all sixteen for scratch before `setShortLength`.
    char16_t* shortUnits() noexcept { return m_units; }

    void setShortLength(int n) noexcept
    {
        m_units[n] = 0;
        m_units[kFormUnit] = static_cast<char16_t>(n);
    }

    /// Copies units between texts that do not overlap.
    static void copyUnits(char16_t* to, char16_t const* from, int n) noexcept
    {
        if (n <= kFewUnits) {
            copyFewUnits(to, from, n);
        } else {
            std::memcpy(to, opaque(from), static_cast<std::size_t>(n) * sizeof(char16_t));
        }
    }

private:
    static constexpr int kUnits = 16;
    static constexpr int kFormUnit = kUnits - 1;
    static constexpr int kLongLengthUnit = sizeof(void*) / sizeof(char16_t);
    static constexpr int kFewUnits = 16;
    static constexpr char16_t kLongForm = 0xFFFF;

    /// Whole-object stores, so that a copy made at once after can load them whole.
    void makeEmpty() noexcept { std::memset(m_units, 0, sizeof(m_units)); }

    TLongStringHeader* header() const noexcept
    {
        TLongStringHeader* block;
        std::memcpy(&block, m_units, sizeof(block));
        return block;
    }

    void setHeader(TLongStringHeader* block) noexcept
    {
        std::memcpy(m_units, &block, sizeof(block));
        m_units[kFormUnit] = kLongForm;
    }

    /// The length in the header, which the long form repeats behind the pointer: asking for it then
    /// costs no look into the block. Without a sign, because processors forward a number that was
    /// just stored at once when nothing has to be done to it: what appends in a loop waits for
    /// that.
    std::uint32_t longLength() const noexcept
    {
        std::uint32_t n;
        std::memcpy(&n, m_units + kLongLengthUnit, sizeof(n));
        return n;
    }

    void storeLongLength(TLongStringHeader* block, std::uint32_t n) noexcept
    {
        std::memcpy(m_units + kLongLengthUnit, &n, sizeof(n));
        block->length = static_cast<std::int32_t>(n);
    }

    char16_t* setLongLength(TLongStringHeader* block, std::uint32_t n) noexcept
    {
        storeLongLength(block, n);
        char16_t* const units = block->text();
        units[n] = 0;
        return units;
    }

    /// Writes the last unit and the zero behind it, both in one store.
    static void putLast(char16_t* to, char16_t c) noexcept
    {
        constexpr bool isLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
        std::uint32_t const last = isLittleEndian ? c : std::uint32_t(c) << 16;
        std::memcpy(to, &last, sizeof(last));
    }

    /// The same pointer, its origin hidden: a compiler that sees a short literal here warns of the
    /// branches for longer texts, which that literal never takes.
    static char16_t const* opaque(char16_t const* p) noexcept
    {
        __asm__("" : "+r"(p));
        return p;
    }

    /// Copies 0 to 16 units in at most two pieces that may overlap.
    static void copyFewUnits(char16_t* to, char16_t const* from, int n) noexcept
    {
        from = opaque(from);
        if (n >= 8) {
            copyEnds<16>(to, from, n);
        } else if (n >= 4) {
            copyEnds<8>(to, from, n);
        } else if (n >= 2) {
            copyEnds<4>(to, from, n);
        } else if (n == 1) {
            *to = *from;
        }
    }

    template <int bytes>
    static void copyEnds(char16_t* to, char16_t const* from, int n) noexcept
    {
        struct Piece
        {
            char units[bytes];
        };
        int const tail = n - bytes / 2;
        Piece first;
        Piece last;
        std::memcpy(&first, from, bytes);
        std::memcpy(&last, from + tail, bytes);
        std::memcpy(to, &first, bytes);
        std::memcpy(to + tail, &last, bytes);
    }

    /// Becomes a copy of `other`; what the object held before is not released.
    void share(TStringManager const& other) noexcept
    {
        if (other.isLong()) {
            other.header()->addReference(); // before the copy, whose stores it would wait for
        }
        std::memcpy(m_units, other.m_units, sizeof(m_units));
    }

    /// A block of the object's own, and the length of the text in it.
    struct OwnBlock
    {
        TLongStringHeader* block;
        std::uint32_t length;
    };

    /// Makes a text long, if it is not, and has room for `n` more units. What is called here never
    /// sees the object itself, so that a compiler keeps its parts in registers through a loop that
    /// appends.
    OwnBlock makeRoom(int n)
    {
        if (!isLong()) {
            char16_t units[kUnits];
            std::memcpy(units, m_units, sizeof(m_units));
            std::uint32_t const length = m_units[kFormUnit];
            setHeader(TLongStringHeader::grown(units, length, n));
            return {header(), length};
        }
        TLongStringHeader* const block = header();
        std::uint32_t const length = longLength();
        if (block->room(length) < static_cast<std::uint32_t>(n) || block->isShared()) {
            setHeader(TLongStringHeader::grown(block, length, n));
            return {header(), length};
        }
        return {block, length};
    }

    void detach();
    void moveToBlock(std::int64_t capacity, int keptUnits);
    char16_t* setLength(int n) noexcept;
    char16_t* resizeForOverwriteSlowly(int n);

    alignas(void*) char16_t m_units[kUnits];

    static_assert(sizeof(TLongStringHeader) == 16, "the text of a block starts 16 bytes in");
};

static_assert(sizeof(TStringManager) == 32, "a text object is sixteen units, nothing else");
