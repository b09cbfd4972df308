#pragma once

#include <string>
#include <vector>

#include "platform/kiv/Type.h"

namespace Kiv::NboAttrLog {

/// How an attribute travels.
enum class RowForm : U8 {
    none,    ///< it does not: constants, keys, and pointers, which mean nothing in another process
    scalar,  ///< by its value
    values,  ///< a collection of values by key
    members, ///< a collection of children by key
    child,   ///< one child
};

struct PlanRow {
    Attribute const* attribute;
    RowForm form;
    std::any defaultValue; ///< of a scalar; empty where no default is known

    bool isAtDefault( Entity const& entity ) const {
        return defaultValue.has_value() && attribute->holds( entity, defaultValue );
    }
};

/// What replication needs to know of a class, derived once from the class's table of attributes. Rows are
/// numbered as in the table; a set of rows is a word of bits.
class Plan {
  public:
    /// Made on first use; lives as long as the process.
    static Plan const& of( Type const& type );

    std::vector<PlanRow> const& rows() const { return rows_; }
    /// The row of that attribute, or null where it is none of the class's own.
    PlanRow const* find( AttributeId id ) const;
    unsigned index( PlanRow const& row ) const { return static_cast<unsigned>( &row - rows_.data() ); }
    /// Scalars that announce nothing, those that announce, and everything that holds something.
    U64 contents() const { return contents_; }
    U64 announcements() const { return announcements_; }
    U64 structures() const { return structures_; }
    U64 scalars() const { return contents_ | announcements_; }
    /// The row of an entity's key in its collection, or null.
    Attribute const* keyRow() const { return keyRow_; }
    /// The plan of what a row of children holds.
    Plan const& childPlan( PlanRow const& row ) const;
    /// Whether an entity is as it was made: nothing in it, every scalar at its default.
    bool isPristine( Entity const& entity ) const;
    /// Makes it so.
    void clear( Entity& entity ) const;

  private:
    explicit Plan( Type const& type );

    Attribute const* keyRow_;
    std::vector<PlanRow> rows_;
    mutable std::vector<Plan const*> childPlans_;
    U64 contents_ = 0;
    U64 announcements_ = 0;
    U64 structures_ = 0;
};

/// The text of a value or key on a stream, as a key of what waits.
std::string bytesOf( ValueType const& type, std::any const& value );

} // namespace Kiv::NboAttrLog
