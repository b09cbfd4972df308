#include "agent/expecting/Comparison.h"

#include <algorithm>

#include "agent/scenario/ValueText.h"

namespace Agent {

std::span<Comparison::Sign const>
Comparison::signs() {
    static constexpr Sign all[] = { // longer ones before those that they begin with
                                    { "==", Relation::equal },  { "!=", Relation::notEqual },
                                    { "<=", Relation::atMost }, { ">=", Relation::atLeast },
                                    { "<", Relation::less },    { ">", Relation::greater }
    };
    return all;
}

Comparison::Comparison( Kiv::ValueType const& type, std::string_view text ) : type_( &type ) {
    std::string_view rest = text;
    for ( Sign const& sign : signs() ) {
        if ( text.starts_with( sign.text ) ) {
            relation_ = sign.relation;
            rest = text.substr( sign.text.size() );
            break;
        }
    }
    bool const orders = relation_ != Relation::equal && relation_ != Relation::notEqual;
    if ( orders && !isNumber() ) {
        Kiv::throwExpected( "a value, or == or != and a value, for what is no number", text );
    }
    try {
        value_ = type.parse( rest.substr( std::min( rest.find_first_not_of( ' ' ), rest.size() ) ) );
    } catch ( Kiv::RangeException const& fault ) {
        Kiv::throwExpected(
            expectationOf( type, fault ) + ", or one behind " +
                ( isNumber() ? "==, !=, <, <=, > or >=" : "== or !=" ),
            text
        );
    }
}

bool
Comparison::isNumber() const {
    return type_->form == Kiv::ValueForm::unsignedInteger || type_->form == Kiv::ValueForm::real;
}

double
Comparison::numberOf( std::any const& value ) const {
    return Kiv::ValueTraits<double>::parse( type_->format( value ) );
}

bool
Comparison::holds( std::any const& value ) const {
    if ( isNumber() ) {
        return holdsFor( numberOf( value ) );
    }
    bool const same = type_->format( value ) == type_->format( value_ );
    return same == ( relation_ == Relation::equal );
}

bool
Comparison::holdsFor( double number ) const {
    double const bound = numberOf( value_ );
    switch ( relation_ ) {
    case Relation::equal: return number == bound;
    case Relation::notEqual: return number != bound;
    case Relation::less: return number < bound;
    case Relation::atMost: return number <= bound;
    case Relation::greater: return number > bound;
    default: return number >= bound;
    }
}

std::string
Comparison::text() const {
    std::string const value = type_->format( value_ );
    if ( relation_ == Relation::equal ) {
        return value;
    }
    auto const sign = std::find_if( signs().begin(), signs().end(), [this]( Sign const& candidate ) {
        return candidate.relation == relation_;
    } );
    return std::string( sign->text ) + " " + value;
}

} // namespace Agent
