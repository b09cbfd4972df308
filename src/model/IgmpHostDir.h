#pragma once

#include "model/IgmpHost.h"

namespace Igmp {

/// The configuration of every emulated host, by name. It owns its members.
class IgmpHostDir : public Kiv::Entity {
  public:
    enum : AttributeId { attrIgmpHost = 258 };
    using IgmpHosts = Kiv::HashMap<IgmpHost, Kiv::Name>;

    class NotifieeConst : public Kiv::Entity::NotifieeConst {
      public:
        virtual void onIgmpHost( Kiv::Name ) {}
        virtual void onIgmpHostkivImmediate() {}
        virtual void onIgmpHost() {}

      protected:
        explicit NotifieeConst( Ptr<IgmpHostDir const> const& dir );
    };
    class Notifiee : public NotifieeConst {
      public:
        IgmpHostDir* notifier() const;

      protected:
        explicit Notifiee( Ptr<IgmpHostDir> const& dir );
    };

    explicit IgmpHostDir( Kiv::Name const& name ) : Entity( name ) {}
    ~IgmpHostDir() override;

    static std::span<Kiv::Attribute const> attributes();
    using GenericIf_ = Kiv::GenericIfOf<IgmpHostDir>;
    static Kiv::Type* _fwkType();
    Kiv::Type* fwkType() const override { return _fwkType(); }

    IgmpHosts const& igmpHost() const { return igmpHost_; }
    /// The member, or null.
    Ptr<IgmpHost> igmpHost( Kiv::Name const& key ) const { return igmpHost_.find( key ); }
    std::size_t igmpHosts() const { return igmpHost_.size(); }
    Ptr<IgmpHost> newIgmpHost( Kiv::Name const& key );
    Ptr<IgmpHost> igmpHostIs( Kiv::Name const& key );
    void igmpHostDel( Kiv::Name const& key );
    void igmpHostDel( IgmpHosts::Iterator const& at ) { igmpHostDel( at->fwkKey() ); }
    void igmpHostDelAll();
    void igmpHostNotify( Kiv::Name const& key );

  private:
    IgmpHosts igmpHost_;
};

Ptr<IgmpHostDir> igmpHostDirFactory( Kiv::Name const& name );

} // namespace Igmp
