/// What code that does not know access objects may reach of them: their counters.

#include "platform/kiv/Type.h"
#include "platform/zornet/Pam.h"

namespace Zornet {

namespace {

using Watcher = Pam::NotifieeConst;

constexpr Kiv::Attribute table[] = {
    Kiv::scalarAttribute<&Pam::readableCount, &Pam::readableCountIs, &Watcher::onReadableCount>(
        Pam::attrReadableCount, "readableCount", "0"
    ),
    Kiv::scalarAttribute<&Pam::writableCount, &Pam::writableCountIs, &Watcher::onWritableCount>(
        Pam::attrWritableCount, "writableCount", "0"
    ),
    Kiv::scalarAttribute<&Pam::txDrops, &Pam::txDropsIs, &Watcher::onTxDrops>(
        Pam::attrTxDrops, "txDrops", "0"
    ),
    Kiv::scalarAttribute<&Pam::txErrors, &Pam::txErrorsIs, &Watcher::onTxErrors>(
        Pam::attrTxErrors, "txErrors", "0"
    ),
    Kiv::scalarAttribute<&Pam::rxErrors, &Pam::rxErrorsIs, &Watcher::onRxErrors>(
        Pam::attrRxErrors, "rxErrors", "0"
    ),
};

} // namespace

std::span<Kiv::Attribute const>
Pam::attributes() {
    return table;
}

Kiv::Type*
Pam::_fwkType() {
    static Kiv::TypeSlot slot{ Kiv::classType<Pam>( "Zornet::Pam", &Kiv::Entity::_fwkType ) };
    return slot.recordIs();
}

} // namespace Zornet
