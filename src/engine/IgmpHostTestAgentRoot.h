#pragma once

#include "engine/IgmpHostDirSm.h"

namespace Igmp {

/// Ties the two directories of hosts to the machine that serves them. Whoever embeds the library fills it in,
/// directories first; it lets go in the reverse order. Nobody is told of a change.
class IgmpHostTestAgentRoot : public Kiv::Entity {
  public:
    enum : AttributeId { attrIgmpHostDir = 258, attrIgmpHostStatusDir, attrIgmpHostDirSm };

    explicit IgmpHostTestAgentRoot( Kiv::Name const& name ) : Entity( name ) {}

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHostTestAgentRoot>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    Ptr<IgmpHostDir> const& igmpHostDir() const { return igmpHostDir_; }
    void igmpHostDirIs( Ptr<IgmpHostDir> const& dir ) { held( igmpHostDir_, dir ); }

    Ptr<IgmpHostStatusDir> const& igmpHostStatusDir() const { return igmpHostStatusDir_; }
    void igmpHostStatusDirIs( Ptr<IgmpHostStatusDir> const& dir ) { held( igmpHostStatusDir_, dir ); }

    Ptr<IgmpHostDirSm> const& igmpHostDirSm() const { return igmpHostDirSm_; }
    void igmpHostDirSmIs( Ptr<IgmpHostDirSm> const& sm ) { held( igmpHostDirSm_, sm ); }

  private:
    template <class T>
    void held( Ptr<T>& stored, Ptr<T> const& value ) {
        if ( stored != value ) {
            stored = value;
            modificationCountInc();
        }
    }

    Ptr<IgmpHostDir> igmpHostDir_;
    Ptr<IgmpHostStatusDir> igmpHostStatusDir_;
    Ptr<IgmpHostDirSm> igmpHostDirSm_;
};

Ptr<IgmpHostTestAgentRoot> igmpHostTestAgentRootFactory( Kiv::Name const& name );

} // namespace Igmp
