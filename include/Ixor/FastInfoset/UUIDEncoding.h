//
// UUIDEncoding.h
//
// Library: FastInfoset
// Module:  UUIDEncoding
//


#ifndef FastInfoset_UUIDEncoding_INCLUDED
#define FastInfoset_UUIDEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API UUIDEncoding: public Encoding
	/// A list of UUIDs (algorithm 9), written as 16 octets each. The text
	/// form is the canonical UUID texts in upper case (groups of 8, 4, 4, 4
	/// and 12 digits joined by "-"), separated by single spaces; it is built
	/// by createContent().
	///
	/// The values are kept as UUIDs rather than as their texts: the text form
	/// is the same, and a long list costs no allocation per value.
{
public:
	typedef Ixor::AutoPtr<UUIDEncoding> Ptr;

	explicit UUIDEncoding(const Ixor::UUID& uuid);

	explicit UUIDEncoding(const std::vector<Ixor::UUID>& uuids);
		/// Throws FISEncodingException "Illegal (empty) data for
		/// UUIDEncoding" for an empty vector.

	explicit UUIDEncoding(const std::string& text);
		/// Parses text. Throws FISEncodingException "Illegal (empty) data for
		/// UUIDEncoding" for an empty text and "Illegal value string for
		/// UUIDEncoding" for a text that parse() refuses.

	static void parse(const std::string& text, std::vector<Ixor::UUID>& uuids);
		/// Fills uuids from text, or leaves it empty when the text is not a
		/// list of texts accepted by the host's UUID parser, separated by
		/// single spaces.

	unsigned int type() const override;
		/// 9.

	bool merge(const Encoding& other) override;
		/// Appends the values of another UUIDEncoding and returns true;
		/// returns false and changes nothing for any other type.

	void write(BitStreamWriter& writer) const override;

	static void decode(BitStreamReader& reader, std::string& text);
		/// Reads one value string into its text form. A length that is not a
		/// multiple of 16 throws FISEncodingException "Illegal size entry for
		/// Ixor::UUID value".

	static void decode(BitStreamReader& reader, std::vector<Ixor::UUID>& uuids);
		/// Reads one value string into uuids (cleared first); sizes as above.

	static Ixor::AutoPtr<Encoding> decode(BitStreamReader& reader);
		/// Reads one value string into a new UUIDEncoding with its text form.

	static Int32 check(const std::string& text);
		/// 16 octets per UUID, or 0 when parse() refuses the text.

	static void encode(BitStreamWriter& writer, const std::string& text);
		/// Writes the values of text; throws as the text constructor does.

	DecodeMethod decodeMethod() const override;
	CheckMethod checkMethod() const override;
	EncodeMethod encodeMethod() const override;

	using Encoding::handle;

	void handle(FISContentHandler* pHandler) const override;
		/// One encodedData(const Ixor::UUID&) call per value, in order;
		/// nothing for a null handler.

	void createContent() override;

protected:
	~UUIDEncoding();

private:
	UUIDEncoding();

	static void writeValues(BitStreamWriter& writer, const std::vector<Ixor::UUID>& uuids);

	std::vector<Ixor::UUID> _values;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_UUIDEncoding_INCLUDED
