#pragma once

#include <map>
#include <string>
#include <vector>

#include "model/IgmpHostStatus.h"

namespace Support {

/// Every attribute of a host's status as it stood when this was made, to tell what has changed since, and
/// that nothing else has.
class StatusChanges {
  public:
    explicit StatusChanges( Igmp::IgmpHostStatus const& status ) : status_( &status ), before_( values() ) {}

    /// What has another value than before, as "name=value", in the order of the names.
    std::vector<std::string> list() const {
        std::vector<std::string> changes;
        for ( auto const& [name, value] : values() ) {
            if ( before_.at( name ) != value ) {
                changes.push_back( name + "=" + value );
            }
        }
        return changes;
    }
    bool none() const { return list().empty(); }

  private:
    std::map<std::string, std::string> values() const {
        std::map<std::string, std::string> values;
        for ( Kiv::Attribute const& row : Igmp::IgmpHostStatus::attributes() ) {
            values[row.name] = Kiv::attributeText( row, *status_ );
        }
        return values;
    }

    Kiv::Ptr<Igmp::IgmpHostStatus const> status_;
    std::map<std::string, std::string> before_;
};

} // namespace Support
