#pragma once

#include <compare>
#include <deque>
#include <map>
#include <string>

#include "platform/kiv/nboattrlog/EntityId.h"

namespace Kiv::NboAttrLog {

/// What a client has written and the server has not applied yet, by attribute and key. Until then what the
/// server says of it is older, and is not to be taken.
class PendingWrites {
  public:
    /// Written in that frame.
    void add( EntityId const& entity, AttributeId id, std::string const& key, U32 frame );
    bool isEmpty() const { return writes_.empty(); }
    bool has( EntityId const& entity, AttributeId id, std::string const& key ) const {
        return !writes_.empty() && writes_.count( Place{ entity, id, key } ) != 0;
    }
    /// The server has applied everything up to that frame.
    void appliedIs( U32 frame );
    static bool isAfter( U32 a, U32 b ) { return static_cast<S32>( a - b ) > 0; }

  private:
    struct Place {
        EntityId entity;
        AttributeId id;
        std::string key;
        friend auto operator<=>( Place const& a, Place const& b ) = default; // NOLINT(modernize-use-nullptr)
    };

    std::map<Place, U32> writes_; ///< the frame of the last write
    std::deque<std::pair<U32, Place>> order_;
};

} // namespace Kiv::NboAttrLog
