#pragma once

#include <compare>
#include <iosfwd>
#include <string>
#include <string_view>

#include "platform/kiv/Types.h"

namespace Kiv {

/// The characters behind String8 and Name: immutable, shared, counted, with a hash computed once.
template <class Char>
class StringN;

template <>
class StringN<unsigned char> {
  public:
    /// What every empty string shares; never freed.
    static StringN nullStringData_;

    static StringN const* make( std::string_view text );
    void referencesInc() const;
    void referencesDec() const;
    std::string_view text() const {
        return bytes_ == 0 ? std::string_view( "" )
                           : std::string_view( reinterpret_cast<char const*>( this + 1 ), bytes_ );
    }
    U32 hash() const { return hash_; }

  private:
    constexpr StringN( U32 bytes, U32 hash ) : bytes_( bytes ), hash_( hash ) {}
    U32 countChange( U32 delta ) const;

    mutable U32 references_ = 0;
    U32 bytes_;
    U32 hash_;
};

/// An immutable shared string of bytes. Copying is one count; assignment and += make a new representation.
class String8 {
  public:
    class IteratorConst;

    String8() : String8( std::string_view() ) {}
    String8( char const* text ) : String8( std::string_view( text ) ) {}
    String8( std::string const& text ) : String8( std::string_view( text ) ) {}
    explicit String8( std::string_view text );
    String8( String8 const& other );
    ~String8() { data_->referencesDec(); }
    String8& operator=( String8 const& other );
    String8& operator=( char const* text ) { return *this = String8( text ); }

    /// Terminated by a zero byte; valid as long as any copy of the string.
    char const* charPtr() const { return view().data(); }
    std::string_view view() const { return data_->text(); }
    U32 bytes() const { return static_cast<U32>( view().size() ); }
    bool empty() const { return view().empty(); }
    U32 hash() const { return data_->hash(); }
    /// At most `count` bytes from `from` on; empty where `from` lies outside.
    String8 substr( long long from, unsigned int count ) const;
    /// Takes `count` bytes of `text` from byte `from` on.
    void init( char const* text, unsigned int from, unsigned int count );
    String8& operator+=( String8 const& tail ) { return *this = *this + tail; }

    IteratorConst begin() const;
    IteratorConst end() const;

    friend String8 operator+( String8 const& a, String8 const& b );
    friend bool operator==( String8 const& a, String8 const& b ) {
        return a.data_ == b.data_ || a.view() == b.view();
    }
    friend std::strong_ordering operator<=>( String8 const& a, String8 const& b ) {
        return a.view() <=> b.view();
    }

  private:
    StringN<unsigned char> const* data_;
};

/// A place in a string, for parsers that advance it. It does not keep the string alive.
class String8::IteratorConst {
  public:
    IteratorConst( char const* begin, char const* at ) : begin_( begin ), at_( at ) {}
    char operator*() const { return *at_; }
    IteratorConst& operator++() {
        ++at_;
        return *this;
    }
    char const* position() const { return at_; }
    /// Bytes from the string's start.
    long long column() const { return at_ - begin_; }
    friend bool operator==( IteratorConst const& a, IteratorConst const& b ) { return a.at_ == b.at_; }

  private:
    char const* begin_;
    char const* at_;
};

/// Name of an entity and key of named collections: a String8 that is compared and hashed, not edited.
class Name {
  public:
    Name() = default;
    Name( char const* text ) : text_( text ) {}
    Name( String8 const& text ) : text_( text ) {}
    Name( std::string const& text ) : text_( text ) {}

    String8 const& string() const { return text_; }
    char const* charPtr() const { return text_.charPtr(); }
    std::string_view view() const { return text_.view(); }
    U32 hash() const { return text_.hash(); }
    bool empty() const { return text_.empty(); }

    friend bool operator==( Name const& a, Name const& b ) { return a.text_ == b.text_; }
    friend std::strong_ordering operator<=>( Name const& a, Name const& b ) { return a.text_ <=> b.text_; }

  private:
    String8 text_;
};

std::ostream& operator<<( std::ostream& out, String8 const& text );
std::ostream& operator<<( std::ostream& out, Name const& name );

} // namespace Kiv
