//
// TextEncoding.h
//
// Library: FastInfoset
// Module:  TextEncoding
//


#ifndef FastInfoset_TextEncoding_INCLUDED
#define FastInfoset_TextEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


template <class V>
struct TextTraits;
	/// What the text named V is: its type, its message and what an empty
	/// text is when it is written. Specialized in the library; not for use
	/// outside it.


template <class V>
class FastInfoset_API TextEncoding: public Encoding
	/// The values whose text is the value, CDataEncoding and NullEncoding,
	/// one template for both: V names the kind. content() holds the UTF-8
	/// text, which is also the octets written; every handler gets it as
	/// characters, never as typed data.
	///
	/// The library instantiates the template once for each kind (extern
	/// template), with V declared FastInfoset_API, so that the vtable and
	/// the type information are the library's.
	///
	/// The message below is the kind's, as its declaration names it: the
	/// empty message ("Illegal empty string for CDataEncoding").
{
public:
	typedef Ixor::AutoPtr<TextEncoding> Ptr;

	explicit TextEncoding(const std::string& text);
	TextEncoding(const char* text, int length);
		/// Copies the text. Throws FISEncodingException with the empty
		/// message when it is empty (or length is not positive).

	unsigned int type() const override;
		/// The kind's type: 10 for CDATA, 0 for a plain string.

	bool merge(const Encoding& other) override;
		/// Appends the text of another value of the same type and returns
		/// true; returns false for any other type.

	void write(BitStreamWriter& writer) const override;
		/// Writes the text as a non-empty octet string.

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one non-empty octet string into text.

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one non-empty octet string into a new value.

	static Int32 check(const std::string& text);
		/// The length of text in octets.

	static void encode(BitStreamWriter& writer, const std::string& str);
		/// Writes str as a non-empty octet string, as the constructor and
		/// write() would.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// Reports the text through characters(); nothing for a null
		/// handler.

	void createContent() override;
		/// Nothing: the text is the value.

protected:
	TextEncoding();
		/// No text, for decode() to fill.

	~TextEncoding();

private:
	typedef TextTraits<V> Traits;
};


//
// The kinds of text
//
// CDataEncoding is the template for CDATA sections; its header includes
// this one. NullEncoding, which adds to the template, has a header of its
// own.
//
struct FastInfoset_API CDataText;


extern template class TextEncoding<CDataText>;


typedef TextEncoding<CDataText> CDataEncoding;
	/// The text of a CDATA section (algorithm 10). Its message is "Illegal
	/// empty string for CDataEncoding", which encode() throws too for an
	/// empty text; writing a value whose text was emptied through
	/// content() throws the octet string's FISEncodingException.


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_TextEncoding_INCLUDED
