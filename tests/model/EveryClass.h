#pragma once

#include <string>
#include <vector>

#include "engine/IgmpHostConfigHelper.h"
#include "engine/IgmpHostTestAgentRoot.h"
#include "tests/support/SimulatedTest.h"

namespace Igmp {

/// One object of every class that has a table of attributes, values apart: entities by their factories, the
/// machines as an enabled version 3 host with one group has them.
class EveryClass : public Support::SimulatedTest {
  protected:
    EveryClass();
    ~EveryClass() override;

    std::vector<Ptr<Kiv::PtrInterface>> const& objects() const { return objects_; }

    Zornet::IpAddr const group_{ "239.1.1.1" };
    Ptr<IgmpHostTestAgentRoot> const root_ = igmpHostTestAgentRootFactory( "root" );
    Ptr<IgmpHost> host_;
    Ptr<IgmpHostSm> sm_;
    Ptr<Zornet::VlanTaggingPam> taggingPam_;

  private:
    void addEntities();
    void addMachines();
    void addVlanClasses();
    void add( Ptr<Kiv::PtrInterface> const& object ) { objects_.push_back( object ); }

    std::vector<Ptr<Kiv::PtrInterface>> objects_;
};

} // namespace Igmp
