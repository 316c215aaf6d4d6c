#include "Platform/LV2/SymbolTable.hpp"

#include "Platform/Foundation/Immortal.hpp"

#include <functional>
#include <utility>

namespace platform::lv2
{

SymbolTable &SymbolTable::shared()
{
    // A plug-in may end its process while others of its threads are at work.
    static foundation::Immortal<SymbolTable> table([] { return SymbolTable(); });
    return table.value;
}

const SymbolTable::Symbol *SymbolTable::find(std::string_view uri, std::size_t hash) const noexcept
{
    const Symbol *symbol = buckets_[hash % buckets_.size()].load(std::memory_order_acquire);
    while (symbol && (symbol->hash != hash || symbol->uri != uri))
        symbol = symbol->next;
    return symbol;
}

LV2_URID SymbolTable::map(std::string_view uri)
{
    const std::size_t hash = std::hash<std::string_view>{}(uri);
    if (const Symbol *known = find(uri, hash))
        return known->number;

    const std::lock_guard lock(mutex_);
    if (const Symbol *known = find(uri, hash))
        return known->number;
    if (symbols_.size() + 1 >= capacity)
        return 0;

    auto &bucket = buckets_[hash % buckets_.size()];
    const auto number = static_cast<LV2_URID>(symbols_.size() + 1);
    const Symbol &symbol = symbols_.emplace_back(
        Symbol{std::string(uri), hash, number, bucket.load(std::memory_order_relaxed)});

    auto &pageSlot = pages_[number / std::tuple_size_v<Page>];
    Page *page = pageSlot.load(std::memory_order_relaxed);
    if (!page) {
        page = &pageStorage_.emplace_back();
        pageSlot.store(page, std::memory_order_release);
    }
    (*page)[number % std::tuple_size_v<Page>].store(&symbol, std::memory_order_release);
    bucket.store(&symbol, std::memory_order_release);
    return number;
}

const char *SymbolTable::unmap(LV2_URID symbol) const noexcept
{
    if (symbol >= capacity)
        return nullptr;
    const Page *page = pages_[symbol / std::tuple_size_v<Page>].load(std::memory_order_acquire);
    if (!page)
        return nullptr;
    const Symbol *found = (*page)[symbol % std::tuple_size_v<Page>].load(std::memory_order_acquire);
    return found ? found->uri.c_str() : nullptr;
}

} // namespace platform::lv2
