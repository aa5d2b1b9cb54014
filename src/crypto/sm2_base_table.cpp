#include "crypto/sm2_base_table.h"

namespace ztutil {
namespace sm2 {
namespace {

struct BaseTables {
    AffinePoint rows[kSpacedParts * tableSize(kBaseWidth)];
    SpacedTables tables;
    bool valid;
};

// (n - 1) G + 1 G must be the point at infinity.
bool orderChecks(const SpacedTables& tables, const AffinePoint& g) {
    U256 orderLessOne;
    const U256 one = {{1, 0, 0, 0}};
    sub256(&orderLessOne, kGroupOrder, one);
    return isInfinity(mulAddFresh(tables, orderLessOne, g, one)) &&
           isInfinity(mulAddSpaced(tables, orderLessOne, tables, one));
}

BaseTables* build() {
    static BaseTables base;
    const AffinePoint g = generator();
    base.valid = onCurve(g);
    if (base.valid) {
        buildSpacedTables(base.rows, g, kBaseWidth);
        base.tables = SpacedTables{base.rows, kBaseWidth};
        base.valid = orderChecks(base.tables, g);
    }
    return &base;
}

}  // namespace

const SpacedTables* baseTables() {
    static const BaseTables* const base = build();
    return base->valid ? &base->tables : nullptr;
}

}  // namespace sm2
}  // namespace ztutil
