#include "korsys/main/text/TStringManager.h"

#include "korsys/main/text/FreedTextBlocks_p.h"
#include "korsys/main/text/TStringErrors_p.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kBlockGranularity = 16; // allocators round up to this much anyway

// A text that grows out of its object is likely to grow on.
constexpr int kFirstBlockUnits = 55; // 128 bytes

constexpr int kLargeUnits = 2048; ///< Room below doubles, from here on it grows by half.

std::size_t BlockBytes(std::int64_t capacity)
{
    std::size_t const units = static_cast<std::size_t>(capacity) + 1;
    std::size_t const bytes = sizeof(TLongStringHeader) + units * sizeof(char16_t);
    return (bytes + kBlockGranularity - 1) / kBlockGranularity * kBlockGranularity;
}

void CheckLength(std::int64_t length)
{
    if (length > TStringManager::kMaxLength) {
        TStringErrors::ThrowTooLong(length);
    }
}

std::int64_t GrownCapacity(std::int64_t oldCapacity, std::int64_t wanted)
{
    std::int64_t const grown = oldCapacity + oldCapacity / (oldCapacity < kLargeUnits ? 1 : 2);
    return std::min<std::int64_t>(std::max(grown, wanted), TStringManager::kMaxLength);
}

/// For `n` units behind a text of `length`, and some besides.
std::int64_t RoomFor(std::uint32_t length, int n)
{
    std::int64_t const newLength = std::int64_t(length) + n;
    CheckLength(newLength);
    return GrownCapacity(length, newLength);
}

std::int32_t CapacityOf(std::size_t bytes)
{
    std::size_t const units = (bytes - sizeof(TLongStringHeader)) / sizeof(char16_t) - 1;
    return static_cast<std::int32_t>(std::min(units, std::size_t(TStringManager::kMaxLength)));
}

/// What `CapacityOf` was told, or less for the longest texts.
std::size_t BytesOf(TLongStringHeader const& header)
{
    std::size_t const units = static_cast<std::size_t>(header.capacity) + 1;
    return sizeof(TLongStringHeader) + units * sizeof(char16_t);
}

void* CheckedMemory(void* memory)
{
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

TLongStringHeader* MakeBlock(void* memory, std::size_t bytes)
{
    auto* const header = new (memory) TLongStringHeader;
    header->references.store(1, std::memory_order_relaxed);
    header->capacity = CapacityOf(bytes);
    return header;
}

// Out of line, so that what is done most often needs no stack.
[[gnu::noinline]] TLongStringHeader* AllocateBlock(std::size_t bytes)
{
    return MakeBlock(CheckedMemory(std::malloc(bytes)), bytes);
}

[[gnu::noinline]] void FreeBlock(TLongStringHeader* header, std::size_t bytes) noexcept
{
    FreedTextBlocks::Begin();
    if (!FreedTextBlocks::Keep(header, bytes)) {
        std::free(static_cast<void*>(header));
    }
}

} // namespace

TLongStringHeader* TLongStringHeader::create(std::int64_t capacity)
{
    std::size_t const bytes = BlockBytes(capacity);
    void* const kept = FreedTextBlocks::Take(bytes);
    return kept != nullptr ? MakeBlock(kept, bytes) : AllocateBlock(bytes);
}

void TLongStringHeader::destroy(TLongStringHeader* header) noexcept
{
    std::size_t const bytes = BytesOf(*header);
    if (!FreedTextBlocks::Keep(header, bytes)) {
        FreeBlock(header, bytes);
    }
}

TLongStringHeader* TLongStringHeader::resized(TLongStringHeader* header, std::int64_t capacity)
{
    // An atomic number may be moved like a plain one while nobody else knows of it.
    std::size_t const bytes = BlockBytes(capacity);
    void* const memory = CheckedMemory(std::realloc(static_cast<void*>(header), bytes));
    auto* const moved = static_cast<TLongStringHeader*>(memory);
    moved->capacity = CapacityOf(bytes);
    return moved;
}

TLongStringHeader* TLongStringHeader::grown(TLongStringHeader* header, std::uint32_t length, int n)
{
    std::int64_t const room = RoomFor(length, n);
    if (!header->isShared()) {
        return resized(header, room);
    }
    TLongStringHeader* const block = create(room);
    std::memcpy(block->text(), header->text(), length * sizeof(char16_t));
    header->release();
    return block;
}

TLongStringHeader* TLongStringHeader::grown(char16_t const (&units)[16], std::uint32_t length,
                                            int n)
{
    std::int64_t const room = RoomFor(length, n);
    TLongStringHeader* const block = create(std::max<std::int64_t>(room, kFirstBlockUnits));
    std::memcpy(block->text(), units, sizeof(units));
    return block;
}

/// Continues on a block of its own with the first `keptUnits` units, the length set to them.
void TStringManager::moveToBlock(std::int64_t capacity, int keptUnits)
{
    if (isLong() && !isShared()) {
        setHeader(TLongStringHeader::resized(header(), capacity));
        setLongLength(header(), static_cast<std::uint32_t>(keptUnits));
        return;
    }
    TLongStringHeader* const block = TLongStringHeader::create(capacity);
    std::memcpy(block->text(), constData(), static_cast<std::size_t>(keptUnits) * sizeof(char16_t));
    if (isLong()) {
        header()->release();
    }
    setHeader(block);
    setLongLength(block, static_cast<std::uint32_t>(keptUnits));
}

void TStringManager::detach()
{
    moveToBlock(std::max(length(), kShortCapacity + 1), length());
}

char16_t* TStringManager::setLength(int n) noexcept
{
    if (!isLong()) {
        setShortLength(n);
        return m_units;
    }
    return setLongLength(header(), static_cast<std::uint32_t>(n));
}

char16_t* TStringManager::resize(int n)
{
    n = std::max(n, 0);
    CheckLength(n);
    int const kept = std::min(n, length());
    if (n > capacity()) {
        // The first step out of the object takes just what is asked for; later ones grow by half.
        moveToBlock(isLong() ? GrownCapacity(capacity(), n) : n, kept);
    } else if (isShared()) {
        if (n <= kShortCapacity) {
            TStringManager shorter;
            shorter.assignShort(constData(), kept);
            swap(shorter);
        } else {
            moveToBlock(n, kept);
        }
    }
    return setLength(n);
}

char16_t* TStringManager::resizeForOverwriteSlowly(int n)
{
    n = std::max(n, 0);
    CheckLength(n);
    if (n <= kShortCapacity) {
        clear();
    } else if (n > capacity() || isShared()) {
        TLongStringHeader* const block = TLongStringHeader::create(n);
        if (isLong()) {
            header()->release();
        }
        setHeader(block);
    }
    return setLength(n);
}

void TStringManager::reserve(int n)
{
    CheckLength(n);
    if (n > capacity() || (n > kShortCapacity && isShared())) {
        moveToBlock(std::max(n, length()), length());
    }
}

void TStringManager::squeeze()
{
    int const n = length();
    if (!isLong()) {
        return;
    }
    if (n <= kShortCapacity) {
        TStringManager shorter;
        shorter.assignShort(constData(), n);
        swap(shorter);
    } else if (!isShared() && BlockBytes(n) < BlockBytes(capacity())) {
        moveToBlock(n, n);
    }
}
