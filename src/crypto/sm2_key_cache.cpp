// A key seen for the first time is multiplied with a table built on the
// spot. Building its spaced tables costs about one such multiplication and
// each later verification with them about 40 % of one, so tables are built
// at the second sighting, when the key has shown it comes back.
#include "crypto/sm2_key_cache.h"

#include <memory>
#include <new>

namespace ztutil {
namespace sm2 {
namespace {

bool sameKey(const AffinePoint& a, const AffinePoint& b) {
    return fieldEqual(a.x, b.x) && fieldEqual(a.y, b.y);
}

struct CachedKey {
    AffinePoint key;
    AffinePoint rows[kSpacedParts * tableSize(kKeyWidth)];
    unsigned long long lastUse;  // 0: empty
};

struct KeyCache {
    CachedKey cached[kCachedKeys];
    AffinePoint remembered[kRememberedKeys];
    int rememberedCount = 0;
    int nextRemembered = 0;
    unsigned long long clock = 0;

    CachedKey* find(const AffinePoint& key) {
        for (CachedKey& entry : cached)
            if (entry.lastUse != 0 && sameKey(entry.key, key))
                return &entry;
        return nullptr;
    }

    // True when the key was remembered; remembers it otherwise.
    bool sawBefore(const AffinePoint& key) {
        for (int i = 0; i < rememberedCount; ++i)
            if (sameKey(remembered[i], key))
                return true;
        remembered[nextRemembered] = key;
        nextRemembered = (nextRemembered + 1) % kRememberedKeys;
        if (rememberedCount < kRememberedKeys)
            ++rememberedCount;
        return false;
    }

    CachedKey* insert(const AffinePoint& key) {
        CachedKey* oldest = &cached[0];
        for (CachedKey& entry : cached)
            if (entry.lastUse < oldest->lastUse)
                oldest = &entry;
        oldest->key = key;
        buildSpacedTables(oldest->rows, key, kKeyWidth);
        return oldest;
    }

    CachedKey* tablesFor(const AffinePoint& key) {
        CachedKey* entry = find(key);
        if (entry == nullptr && sawBefore(key))
            entry = insert(key);
        if (entry != nullptr)
            entry->lastUse = ++clock;
        return entry;
    }
};

KeyCache* threadCache() {
    static thread_local std::unique_ptr<KeyCache> cache;
    if (!cache) {
        cache.reset(new (std::nothrow) KeyCache);
        if (cache)
            for (CachedKey& entry : cache->cached)
                entry.lastUse = 0;
    }
    return cache.get();
}

}  // namespace

JacobianPoint mulAddWithKey(const SpacedTables& base, const U256& s, const AffinePoint& key,
                            const U256& t) {
    KeyCache* cache = threadCache();
    const CachedKey* entry = cache != nullptr ? cache->tablesFor(key) : nullptr;
    if (entry == nullptr)
        return mulAddFresh(base, s, key, t);
    return mulAddSpaced(base, s, SpacedTables{entry->rows, kKeyWidth}, t);
}

}  // namespace sm2
}  // namespace ztutil
