#pragma once

#include "model/IgmpHostStatus.h"

namespace Igmp {

/// The status of every enabled host, by name. It owns its members.
class IgmpHostStatusDir : public Kiv::Entity {
  public:
    enum : AttributeId { attrIgmpHostStatus = 258 };
    using IgmpHostStatuss = Kiv::HashMap<IgmpHostStatus, Kiv::Name>;

    class NotifieeConst : public Kiv::Entity::NotifieeConst {
      public:
        virtual void onIgmpHostStatus( Kiv::Name ) {}
        virtual void onIgmpHostStatuskivImmediate() {}
        virtual void onIgmpHostStatus() {}

      protected:
        explicit NotifieeConst( Ptr<IgmpHostStatusDir const> const& dir );
    };
    class Notifiee : public NotifieeConst {
      public:
        IgmpHostStatusDir* notifier() const;

      protected:
        explicit Notifiee( Ptr<IgmpHostStatusDir> const& dir );
    };

    explicit IgmpHostStatusDir( Kiv::Name const& name ) : Entity( name ) {}
    ~IgmpHostStatusDir() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHostStatusDir>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    IgmpHostStatuss const& igmpHostStatus() const { return igmpHostStatus_; }
    /// The member, or null.
    Ptr<IgmpHostStatus> igmpHostStatus( Kiv::Name const& key ) const { return igmpHostStatus_.find( key ); }
    std::size_t igmpHostStatuss() const { return igmpHostStatus_.size(); }
    Ptr<IgmpHostStatus> newIgmpHostStatus( Kiv::Name const& key );
    Ptr<IgmpHostStatus> igmpHostStatusIs( Kiv::Name const& key );
    void igmpHostStatusDel( Kiv::Name const& key );
    void igmpHostStatusDel( IgmpHostStatuss::Iterator const& at ) { igmpHostStatusDel( at->fwkKey() ); }
    void igmpHostStatusDelAll();
    void igmpHostStatusNotify( Kiv::Name const& key );

  private:
    IgmpHostStatuss igmpHostStatus_;
};

Ptr<IgmpHostStatusDir> igmpHostStatusDirFactory( Kiv::Name const& name );

} // namespace Igmp
