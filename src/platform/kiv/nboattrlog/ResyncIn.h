#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "platform/kiv/Attribute.h"

namespace Kiv::NboAttrLog {

/// What is kept while an entity arrives in full over one that holds something already: the keys that have
/// come, by row, and the walk that deletes the others in the end. A row's end leaves no walk behind.
class ResyncIn {
  public:
    explicit ResyncIn( U64 structures ) : awaited_( structures ) {}

    /// Whether the end of that row has still to come.
    bool isAwaited( unsigned row ) const { return ( awaited_ >> row & 1 ) != 0; }
    void endIs( unsigned row ) {
        invariant( !iter_, "!rrc->iter()" );
        awaited_ &= ~( U64{ 1 } << row );
    }
    bool isThrough() const { return awaited_ == 0; }

    std::map<unsigned, std::set<std::string>> seen;

    CollectionCursor* iter() const { return iter_.get(); }
    void iterIs( std::unique_ptr<CollectionCursor> at ) { iter_ = std::move( at ); }

  private:
    U64 awaited_;
    std::unique_ptr<CollectionCursor> iter_;
};

} // namespace Kiv::NboAttrLog
