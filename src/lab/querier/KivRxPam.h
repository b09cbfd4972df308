#pragma once

#include "lab/Querier.h"

namespace Lab {

/// Tells a querier of frames to be read, always inside the change of `readableCount`: a querier has no use
/// for deferred delivery. Harmless once it is stopped, also where a walk over the access object's reactors
/// still holds it.
class Querier::KivRxPam : public Zornet::Pam::Notifiee {
  public:
    KivRxPam( Kiv::Ptr<Zornet::Pam> const& pam, Querier& querier ) : Notifiee( pam ), querier_( &querier ) {}

    void onReadableCount() override {
        if ( querier_ ) {
            querier_->handleReadable();
        }
    }
    void stop() {
        querier_ = nullptr;
        isRegisteredNotifieeIs( false );
    }

  private:
    Querier* querier_;
};

} // namespace Lab
