//
// EncodingAlgorithm.h
//
// Library: FastInfoset
// Module:  EncodingAlgorithm
//


#ifndef FastInfoset_EncodingAlgorithm_INCLUDED
#define FastInfoset_EncodingAlgorithm_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API EncodingAlgorithm
	/// The writer's table of encode and check functions by algorithm index:
	/// 1 hexadecimal, 2 base64, 3 short, 4 int, 5 long, 6 boolean, 7 float,
	/// 8 double, 9 UUID, 10 CDATA; 0 and 11 to 31 have none.
{
public:
	static const unsigned int USER_DEFINED = 32;
		/// The first user-defined index and the size of the table.

	EncodingAlgorithm();

	void initializeEncodings();
		/// Fills the table with the built-in algorithms.

	void add(EncodeMethod encode, CheckMethod check);
		/// Appends an entry; its index is the table's size before.

	void encode(unsigned int index, BitStreamWriter& writer, const std::string& text) const;
		/// Writes text with the algorithm of the given index. Indexes without
		/// an algorithm, including those from USER_DEFINED up, throw
		/// FISException "Invalid encoding defined".

	unsigned int findEncoding(const std::string& text) const;
		/// The index of the algorithm that encodes text in the fewest
		/// octets (the lower index on a tie), or 0 when none can.

private:
	std::vector<EncodeMethod> _encodings;
	std::vector<CheckMethod>  _checks;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_EncodingAlgorithm_INCLUDED
