//
// BoolEncoding.h
//
// Library: FastInfoset
// Module:  BoolEncoding
//


#ifndef FastInfoset_BoolEncoding_INCLUDED
#define FastInfoset_BoolEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API BoolEncoding: public Encoding
	/// A list of booleans (algorithm 6), written as a 4-bit count of the
	/// unused bits of the last octet followed by one bit per value. The text
	/// form is "true" and "false" separated by single spaces; it is built by
	/// createContent().
{
public:
	typedef Ixor::AutoPtr<BoolEncoding> Ptr;

	static const std::string VAL_TRUE;
		/// "true"

	static const std::string VAL_FALSE;
		/// "false"

	explicit BoolEncoding(bool value);

	BoolEncoding(const char* text) = delete;
		/// A string literal would otherwise silently become the value true.

	explicit BoolEncoding(const std::vector<bool>& values);
		/// Throws FISEncodingException "Illegal (empty) data for BoolEncoding"
		/// for an empty vector.

	explicit BoolEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// BoolEncoding" for an empty text and "Illegal value string for
		/// BoolEncoding" for a text that parse() refuses.

	static void parse(const std::string& text, std::vector<bool>& values);
		/// Fills values from text, or leaves it empty when the text is not a
		/// list of "true" and "false" separated by single spaces.

	unsigned int type() const override;
		/// 6.

	bool merge(const Encoding& other) override;
		/// Appends the values of another BoolEncoding and returns true;
		/// returns false and changes nothing for any other type. The text
		/// form is not rebuilt.

	void write(BitStreamWriter& writer) const override;

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one value string into its text form.

	static void decode(BitStreamReader& reader, std::vector<bool>& values);
		/// Reads one value string into values (cleared first). An unused-bit
		/// count that leaves fewer than zero values throws
		/// FISEncodingException "Illegal unused bit count for boolean value".

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one value string into a new BoolEncoding with its text form.
		/// A string without values throws FISEncodingException "Illegal
		/// (empty) data for BoolEncoding".

	static Int32 check(const std::string& text);
		/// (values + 7) / 8, or 0 when parse() refuses the text. This leaves
		/// out the 4-bit count, so it can be one octet less than write()
		/// produces.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the values of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// One encodedData(bool) call per value, in order; nothing for a
		/// null handler.

	void createContent() override;

protected:
	~BoolEncoding();

private:
	BoolEncoding();

	static void writeValues(BitStreamWriter& writer, const std::vector<bool>& values);

	std::vector<bool> _values;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_BoolEncoding_INCLUDED
