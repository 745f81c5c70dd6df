//
// LongEncoding.h
//
// Library: FastInfoset
// Module:  LongEncoding
//


#ifndef FastInfoset_LongEncoding_INCLUDED
#define FastInfoset_LongEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API LongEncoding: public Encoding
	/// A list of signed 64-bit integers (algorithm 5), written as 64-bit
	/// big-endian values. The text form is the values in canonical decimal,
	/// separated by single spaces; it is built by createContent().
{
public:
	typedef Ixor::AutoPtr<LongEncoding> Ptr;

	explicit LongEncoding(long value);

	explicit LongEncoding(const std::vector<long>& values);
		/// Throws FISEncodingException "Illegal (empty) data for LongEncoding"
		/// for an empty vector.

	explicit LongEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// LongEncoding" for an empty text and "Illegal value string for
		/// LongEncoding" for a text that parse() refuses.

	static void parse(const std::string& text, std::vector<long>& values);
		/// Fills values from text, or leaves it empty when the text is not a
		/// list of canonical 64-bit decimals separated by single spaces.

	unsigned int type() const override;
		/// 5.

	bool merge(const Encoding& other) override;
		/// Appends the values of another LongEncoding and returns true;
		/// returns false and changes nothing for any other type. The text
		/// form is not rebuilt.

	void write(BitStreamWriter& writer) const override;

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one value string into its text form. A length that is not a
		/// multiple of 8 throws FISEncodingException "Illegal size entry
		/// for Ixor::Int64 value".

	static void decode(BitStreamReader& reader, std::vector<long>& values);
		/// Reads one value string into values (cleared first). A length that
		/// is not a multiple of 8 throws FISEncodingException
		/// "Illegal size entry for Ixor::Int64 value".

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one value string into a new LongEncoding with its text form.

	static Int32 check(const std::string& text);
		/// 8 octets per value, or 0 when parse() refuses the text.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the values of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// One encodedData(long) call per value, in order; nothing for a null
		/// handler.

	void createContent() override;

protected:
	~LongEncoding();

private:
	LongEncoding();

	static void writeValues(BitStreamWriter& writer, const std::vector<long>& values);

	std::vector<long> _values;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_LongEncoding_INCLUDED
