#include "platform/kiv/nboattrlog/PendingWrites.h"

namespace Kiv::NboAttrLog {

void
PendingWrites::add( EntityId const& entity, AttributeId id, std::string const& key, U32 frame ) {
    Place const place{ entity, id, key };
    writes_[place] = frame;
    order_.emplace_back( frame, place );
}

void
PendingWrites::appliedIs( U32 frame ) {
    while ( !order_.empty() && !isAfter( order_.front().first, frame ) ) {
        auto const at = writes_.find( order_.front().second );
        if ( at != writes_.end() && !isAfter( at->second, frame ) ) {
            writes_.erase( at );
        }
        order_.pop_front();
    }
}

} // namespace Kiv::NboAttrLog
