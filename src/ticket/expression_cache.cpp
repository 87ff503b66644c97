#include "ticket/expression_cache.h"

#include <locale>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace panelry::ticket
{

namespace
{

constexpr std::size_t kMostExpressions = 256;  // account tables hold some tens of masks

struct Cache {
    std::shared_mutex lock;
    std::unordered_map<std::string, std::shared_ptr<const std::regex>> compiled;
};

Cache& TheCache()
{
    static Cache& cache = *new Cache;  // threads may still ask at the end of the process
    return cache;
}

std::shared_ptr<const std::regex> Compile(const std::string& pattern)
{
    auto expression = std::make_shared<std::regex>();
    expression->imbue(std::locale::classic());
    expression->assign(pattern);
    return expression;
}

}  // namespace

std::shared_ptr<const std::regex> CompiledExpression(const std::string& pattern)
{
    Cache& cache = TheCache();
    {
        const std::shared_lock guard(cache.lock);
        const auto found = cache.compiled.find(pattern);
        if (found != cache.compiled.end()) {
            return found->second;
        }
    }
    std::shared_ptr<const std::regex> made = Compile(pattern);
    const std::lock_guard guard(cache.lock);
    if (cache.compiled.size() >= kMostExpressions) {
        cache.compiled.clear();
    }
    cache.compiled.emplace(pattern, made);
    return made;
}

}  // namespace panelry::ticket
