#include "platform/kiv/String8.h"

#include <atomic>
#include <cstring>
#include <new>
#include <ostream>

#include "platform/kiv/PtrInterface.h"

namespace Kiv {

namespace {

/// FNV-1a, folded once more so that the top bits depend on every byte.
U32
hashOf( std::string_view text ) {
    U32 hash = 2166136261U;
    for ( char c : text ) {
        hash = ( hash ^ static_cast<U8>( c ) ) * 16777619U;
    }
    hash ^= hash >> 15;
    return hash * 0x2c1b3c6dU;
}

} // namespace

constinit StringN<unsigned char> StringN<unsigned char>::nullStringData_( 0, 0 );

StringN<unsigned char> const*
StringN<unsigned char>::make( std::string_view text ) {
    if ( text.empty() ) {
        return &nullStringData_;
    }
    void* room = ::operator new( sizeof( StringN ) + text.size() + 1 );
    auto* data = new ( room ) StringN( static_cast<U32>( text.size() ), hashOf( text ) );
    char* bytes = reinterpret_cast<char*>( data + 1 );
    std::memcpy( bytes, text.data(), text.size() );
    bytes[text.size()] = '\0';
    return data;
}

U32
StringN<unsigned char>::countChange( U32 delta ) const {
    if ( VFPtrInterface::enableThreadSafePointers ) {
        return std::atomic_ref<U32>( references_ ).fetch_add( delta ) + delta;
    }
    return references_ += delta;
}

void
StringN<unsigned char>::referencesInc() const {
    if ( this != &nullStringData_ ) {
        countChange( 1 );
    }
}

void
StringN<unsigned char>::referencesDec() const {
    if ( this != &nullStringData_ && countChange( ~0U ) == 0 ) {
        ::operator delete( const_cast<StringN*>( this ) );
    }
}

String8::String8( std::string_view text ) : data_( StringN<unsigned char>::make( text ) ) {
    data_->referencesInc();
}

String8::String8( String8 const& other ) : data_( other.data_ ) {
    data_->referencesInc();
}

String8&
String8::operator=( String8 const& other ) {
    other.data_->referencesInc();
    data_->referencesDec();
    data_ = other.data_;
    return *this;
}

String8
String8::substr( long long from, unsigned int count ) const {
    if ( from < 0 || from > static_cast<long long>( bytes() ) ) {
        return {};
    }
    return String8( view().substr( static_cast<std::size_t>( from ), count ) );
}

void
String8::init( char const* text, unsigned int from, unsigned int count ) {
    *this = String8( std::string_view( text + from, count ) );
}

String8::IteratorConst
String8::begin() const {
    return { charPtr(), charPtr() };
}

String8::IteratorConst
String8::end() const {
    return { charPtr(), charPtr() + bytes() };
}

String8
operator+( String8 const& a, String8 const& b ) {
    std::string joined( a.view() );
    joined += b.view();
    return String8( joined );
}

std::ostream&
operator<<( std::ostream& out, String8 const& text ) {
    return out << text.view();
}

std::ostream&
operator<<( std::ostream& out, Name const& name ) {
    return out << name.view();
}

} // namespace Kiv
