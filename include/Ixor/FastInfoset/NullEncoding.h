//
// NullEncoding.h
//
// Library: FastInfoset
// Module:  NullEncoding
//


#ifndef FastInfoset_NullEncoding_INCLUDED
#define FastInfoset_NullEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API NullEncoding: public Encoding
	/// A plain string carried as its UTF-8 octets (type 0, no algorithm):
	/// the text is the value. The parser keeps one for a whole parse and
	/// reads every literal string into its content().
{
public:
	typedef Ixor::AutoPtr<NullEncoding> Ptr;

	NullEncoding();
		/// An empty string with 1024 characters of capacity reserved.

	explicit NullEncoding(const std::string& text);
	NullEncoding(const char* text, int length);
		/// Copies the text. Throws FISEncodingException "Illegal empty string
		/// for NullEncoding" when it is empty (or length is not positive).

	unsigned int type() const override;
		/// 0.

	bool merge(const Encoding& other) override;
		/// Appends the text of another plain string (a NullEncoding or a
		/// NullRefEncoding) and returns true; returns false for any other
		/// type.

	void write(BitStreamWriter& writer) const override;
		/// Writes the text as a non-empty octet string. An empty text is a
		/// programming error (assertion).

	static void decode(BitStreamReader& reader, std::string& out);
		/// Reads one non-empty octet string into out.

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one non-empty octet string into a new NullEncoding.

	static Int32 check(const std::string& text);
		/// The length of text in octets.

	static void encode(BitStreamWriter& writer, const std::string& str);
		/// Writes str as a non-empty octet string; an empty str is a
		/// programming error (assertion).

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// Reports the text through characters(): a plain string is not
		/// typed data. Nothing for a null handler.

	void createContent() override;
		/// Nothing: the text is the value.

protected:
	struct Unreserved
	{
	};

	explicit NullEncoding(Unreserved);
		/// An empty string without reserved capacity, for subclasses that
		/// keep their text elsewhere.

	~NullEncoding();
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_NullEncoding_INCLUDED
