#pragma once

#include <vector>

#include "platform/kiv/Attribute.h"

namespace Kiv {

// The text form of a value of several fields, over its type's table:
//     Value('Igmp::IgmpHostIntfConfig', ** {'intfId': 'et1', 'vlanId': 100})
// Written out, every field stands in the table's order. Read, fields may stand in any order, a field left out
// has its default and one given twice its last value; there may be blanks between the parts.

String8 compositeText( char const* typeName, std::span<Attribute const> table, PtrInterface const& holder );

/// The values of the fields in the table's order. Advances `at` past the text and any blanks behind it. A
/// fault inside a field's value is raised with the field's name in front.
std::vector<std::any> compositeArguments(
    char const* typeName, std::span<Attribute const> table, String8::IteratorConst& at,
    String8::IteratorConst const& end
);

} // namespace Kiv
