#include "platform/kiv/nboattrlog/Exceptions.h"

namespace Kiv {

void
throwAttrLogRecordException( String8 const& text ) {
    throw AttrLogRecordException( text, Expect::current(), Expect::current().any() );
}

void
throwEntityIdUnavailableException( String8 const& text ) {
    throw EntityIdUnavailableException( text, Expect::current(), Expect::current().any() );
}

} // namespace Kiv
