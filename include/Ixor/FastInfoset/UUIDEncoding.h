//
// UUIDEncoding.h
//
// Library: FastInfoset
// Module:  UUIDEncoding
//


#ifndef FastInfoset_UUIDEncoding_INCLUDED
#define FastInfoset_UUIDEncoding_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/ValueListEncoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API UUIDEncoding;
extern template class ValueListEncoding<UUIDEncoding, Ixor::UUID>;


class FastInfoset_API UUIDEncoding: public ValueListEncoding<UUIDEncoding, Ixor::UUID>
	/// A list of UUIDs (algorithm 9), written as 16 octets each. The text
	/// form is the canonical UUID texts in upper case (groups of 8, 4, 4, 4
	/// and 12 digits joined by "-"), separated by single spaces; parse()
	/// accepts the texts that the host's UUID parser accepts.
	///
	/// The values are kept as UUIDs rather than as their texts: the text form
	/// is the same, and a long list costs no allocation per value.
	///
	/// Its messages are "Illegal (empty) data for UUIDEncoding", "Illegal
	/// value string for UUIDEncoding" and, for a length that is not a
	/// multiple of 16, "Illegal size entry for Ixor::UUID value".
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

protected:
	~UUIDEncoding();

private:
	UUIDEncoding();

	friend class ValueListEncoding<UUIDEncoding, Ixor::UUID>;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_UUIDEncoding_INCLUDED
