//
// DoubleEncoding.h
//
// Library: FastInfoset
// Module:  DoubleEncoding
//


#ifndef FastInfoset_DoubleEncoding_INCLUDED
#define FastInfoset_DoubleEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API DoubleEncoding: public Encoding
	/// A list of IEEE 754 double-precision floats (algorithm 8), written as
	/// 64-bit big-endian values. The text form is the values separated by
	/// single spaces, each as the double formatter writes it; it is built by
	/// createContent().
{
public:
	typedef Ixor::AutoPtr<DoubleEncoding> Ptr;

	explicit DoubleEncoding(double value);

	explicit DoubleEncoding(const std::vector<double>& values);
		/// Throws FISEncodingException "Illegal (empty) data for DoubleEncoding"
		/// for an empty vector.

	explicit DoubleEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// DoubleEncoding" for an empty text and "Illegal value string for
		/// DoubleEncoding" for a text that parse() refuses.

	static void parse(const std::string& text, std::vector<double>& values);
		/// Fills values from text, or leaves it empty when the text is not a
		/// list of numbers separated by single spaces, each given back
		/// unchanged by the double formatter.

	unsigned int type() const override;
		/// 8.

	bool merge(const Encoding& other) override;
		/// Appends the values of another DoubleEncoding and returns true;
		/// returns false and changes nothing for any other type. The text
		/// form is not rebuilt.

	void write(BitStreamWriter& writer) const override;

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one value string into its text form. A length that is not a
		/// multiple of 8 throws FISEncodingException "Illegal size entry
		/// for double value".

	static void decode(BitStreamReader& reader, std::vector<double>& values);
		/// Reads one value string into values (cleared first). A length that
		/// is not a multiple of 8 throws FISEncodingException
		/// "Illegal size entry for double value".

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one value string into a new DoubleEncoding with its text form.

	static Int32 check(const std::string& text);
		/// 8 octets per value, or 0 when parse() refuses the text.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the values of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// One encodedData(double) call per value, in order; nothing for a null
		/// handler.

	void createContent() override;

protected:
	~DoubleEncoding();

private:
	DoubleEncoding();

	static void writeValues(BitStreamWriter& writer, const std::vector<double>& values);

	std::vector<double> _values;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_DoubleEncoding_INCLUDED
