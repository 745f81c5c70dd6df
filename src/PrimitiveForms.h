//
// PrimitiveForms.h
//
// Library: FastInfoset
// Module:  Encoder
//
// The forms of the format's small numbers, each defined once: the integers
// that start on the second, third, fourth, fifth or seventh bit of an
// octet, the lengths of non-empty octet strings that start on the second,
// fifth or seventh bit, and the lengths of sequences. The writer's and the
// reader's one-step coders (FastEncoding.h, FastDecoding.h) are built from
// these tables at compile time; the general paths of Encoder and Decoder
// walk the same tables at run time. Internal: this header is not
// installed.
//


#ifndef FastInfoset_PrimitiveForms_INCLUDED
#define FastInfoset_PrimitiveForms_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoder.h"


namespace Ixor {
namespace FastInfoset {
namespace PrimitiveForms {


struct Form
	/// One way to code a number: a field of size bits whose low valueBits
	/// bits hold the number minus first, and whose bits above them are
	/// those of marker.
{
	int      size;
	int      valueBits;
	UInt64   marker;
	UInt64   first;
	UInt64   last;      // the largest number a writer puts in this form
	unsigned leadEnd;   // readers take the leads below this one, and not below the previous form's, for this form
};


struct FormSet
	/// The forms of one kind of number at one start position, in the order
	/// of their leads: the first leadBits bits of a field, which tell the
	/// forms apart. A lead at or past the last form's leadEnd names no form.
{
	int    leadBits;
	int    count;
	int    zeroForm;    // the form of the number 0, or -1 where 0 cannot be coded
	UInt64 largest;     // the largest number a reader accepts
	Form   forms[4];
};


constexpr UInt64 MAXINT20 = Encoder::MAXINT20;
constexpr UInt64 LONGEST_LENGTH = UInt64(1) << 32;   // a writer's longest octet string
constexpr UInt64 ANY = ~UInt64(0);


// '0' and 6 bits, '10' and 13 bits, '110' and 20 bits, '1111111' for 0.
// Readers take '111' with any other four bits for the third form.
inline constexpr FormSet INTEGER_ON_2ND_BIT =
{
	7, 4, 3, MAXINT20,
	{
		{ 7,  6, 0,        1,    64,       64},
		{15, 13, 0x4000,   65,   8256,     96},
		{23, 20, 0x600000, 8257, MAXINT20, 127},
		{ 7,  0, 127,      0,    0,        128}
	}
};

constexpr FormSet integerFormsOn3rdOr4thBit(int leadBits, unsigned lastLeadEnd)
	/// '0' and leadBits - 1 bits, '100' and 8 more, '101' and 16 more,
	/// '11000' (and a sixth 0 on the third bit) with four 0 bits and 20 bits.
	/// Readers take the leads up to lastLeadEnd for the last form.
{
	const UInt64 half = UInt64(1) << (leadBits - 1);
	const UInt64 second = half + (UInt64(1) << (leadBits + 5));
	const UInt64 third = second + (UInt64(1) << (leadBits + 13));
	return
	{
		leadBits, 4, -1, MAXINT20,
		{
			{leadBits,      leadBits - 1,  0,                        1,          half,     unsigned(half)},
			{leadBits + 8,  leadBits + 5,  half << 8,                half + 1,   second,   unsigned(half + half / 4)},
			{leadBits + 16, leadBits + 13, (half | half / 4) << 16,  second + 1, third,    unsigned(half + half / 2)},
			{leadBits + 24, 20,            (half | half / 2) << 24,  third + 1,  MAXINT20, lastLeadEnd}
		}
	};
}


// Only '110000' starts the last form; the leads above it are reserved.
inline constexpr FormSet INTEGER_ON_3RD_BIT = integerFormsOn3rdOr4thBit(6, 49);

// Any lead from '11000' up starts the last form, and the four bits after it
// are not looked at.
inline constexpr FormSet INTEGER_ON_4TH_BIT = integerFormsOn3rdOr4thBit(5, 32);

// The eight bits of the number minus 1, on the fifth or the seventh bit.
inline constexpr FormSet INTEGER_ON_5TH_OR_7TH_BIT =
{
	8, 1, -1, 256,
	{
		{8, 8, 0, 1, 256, 256}
	}
};


constexpr FormSet stringLengthForms(int leadBits)
	/// '0' and leadBits - 1 bits, '10' (and 0 bits up to the lead's end)
	/// and 8 bits, '11' (and 0 bits) and 32 bits. Readers take every lead
	/// above the second form's for the last form.
{
	const UInt64 half = UInt64(1) << (leadBits - 1);
	return
	{
		leadBits, 3, -1, ANY,
		{
			{leadBits,      leadBits - 1, 0,                       1,          half,           unsigned(half)},
			{leadBits + 8,  8,            half << 8,               half + 1,   half + 256,     unsigned(half + 1)},
			{leadBits + 32, 32,           (half | half / 2) << 32, half + 257, LONGEST_LENGTH, 1u << leadBits}
		}
	};
}


inline constexpr FormSet STRING_LENGTH_ON_2ND_BIT = stringLengthForms(7);
inline constexpr FormSet STRING_LENGTH_ON_5TH_BIT = stringLengthForms(4);
inline constexpr FormSet STRING_LENGTH_ON_7TH_BIT = stringLengthForms(2);

// On an octet boundary: '0' and 7 bits, '1000' and 20 bits. Readers do not
// look at the three bits after the leading 1.
inline constexpr FormSet SEQUENCE_LENGTH =
{
	1, 2, -1, ANY,
	{
		{ 8,  7, 0,        1,   128,      1},
		{24, 20, 0x800000, 129, MAXINT20, 2}
	}
};


// The generated forms, as the format gives them.
static_assert(INTEGER_ON_3RD_BIT.forms[1].marker == 0x2000 && INTEGER_ON_3RD_BIT.forms[2].first == 2081
	&& INTEGER_ON_3RD_BIT.forms[2].marker == 0x280000 && INTEGER_ON_3RD_BIT.forms[3].first == 526369
	&& INTEGER_ON_3RD_BIT.forms[3].marker == 0x30000000, "integers on the third bit");
static_assert(INTEGER_ON_4TH_BIT.forms[1].last == 1040 && INTEGER_ON_4TH_BIT.forms[2].marker == 0x140000
	&& INTEGER_ON_4TH_BIT.forms[3].first == 263185 && INTEGER_ON_4TH_BIT.forms[3].marker == 0x18000000, "integers on the fourth bit");
static_assert(STRING_LENGTH_ON_2ND_BIT.forms[2].marker == UInt64(96) << 32 && STRING_LENGTH_ON_2ND_BIT.forms[2].first == 321
	&& STRING_LENGTH_ON_5TH_BIT.forms[1].first == 9 && STRING_LENGTH_ON_7TH_BIT.forms[2].first == 259, "string lengths");


inline const FormSet* integerFormsAt(int pos)
	/// The forms of an integer that starts at bit position pos, or null.
{
	switch (pos)
	{
	case 1:  return &INTEGER_ON_2ND_BIT;
	case 2:  return &INTEGER_ON_3RD_BIT;
	case 3:  return &INTEGER_ON_4TH_BIT;
	case 4:
	case 6:  return &INTEGER_ON_5TH_OR_7TH_BIT;
	default: return nullptr;
	}
}


inline const FormSet* stringLengthFormsAt(int pos)
	/// The forms of an octet string's length that starts at bit position
	/// pos, or null.
{
	switch (pos)
	{
	case 1:  return &STRING_LENGTH_ON_2ND_BIT;
	case 4:  return &STRING_LENGTH_ON_5TH_BIT;
	case 6:  return &STRING_LENGTH_ON_7TH_BIT;
	default: return nullptr;
	}
}


constexpr UInt64 lowBits(int count)
{
	return count >= 64 ? ~UInt64(0) : (UInt64(1) << count) - 1;
}


inline const Form* formOfLead(const FormSet& forms, unsigned lead)
	/// The form a reader takes for lead, or null for a reserved lead.
{
	for (int i = 0; i < forms.count; ++i)
	{
		if (lead < forms.forms[i].leadEnd) return &forms.forms[i];
	}
	return nullptr;
}


constexpr UInt64 valueOf(const Form& form, UInt64 field)
	/// The number a whole field of the form stands for.
{
	return (field & lowBits(form.valueBits)) + form.first;
}


//
// One-step coders, unrolled at compile time for one form set
//
template <const FormSet& SET, int I = 0>
FastInfoset_ALWAYS_INLINE bool encodeNonZero(UInt64 value, UInt64& field, int& size)
{
	if constexpr (I == SET.count) return false;
	else if constexpr (I == SET.zeroForm) return encodeNonZero<SET, I + 1>(value, field, size);
	else
	{
		constexpr Form FORM = SET.forms[I];
		if (value <= FORM.last)
		{
			field = (value - FORM.first) | FORM.marker;
			size = FORM.size;
			return true;
		}
		return encodeNonZero<SET, I + 1>(value, field, size);
	}
}


template <const FormSet& SET>
FastInfoset_ALWAYS_INLINE bool encode(UInt64 value, UInt64& field, int& size)
	/// The field of value; false where a writer may not code it.
{
	if (value == 0)
	{
		if constexpr (SET.zeroForm < 0) return false;
		else
		{
			field = SET.forms[SET.zeroForm].marker;
			size = SET.forms[SET.zeroForm].size;
			return true;
		}
	}
	return encodeNonZero<SET>(value, field, size);
}


template <const FormSet& SET, int I = 0>
FastInfoset_ALWAYS_INLINE bool decodeLead(UInt64 window, unsigned lead, UInt64& value, int& size)
{
	if constexpr (I == SET.count) return false;
	else
	{
		constexpr Form FORM = SET.forms[I];
		// The last form of a set without reserved leads takes all the rest.
		constexpr bool REST = I + 1 == SET.count && FORM.leadEnd == (1u << SET.leadBits);
		if (REST || lead < FORM.leadEnd)
		{
			value = valueOf(FORM, window >> (64 - FORM.size));
			size = FORM.size;
			if constexpr (FORM.first + lowBits(FORM.valueBits) > SET.largest)
			{
				if (value > SET.largest) return false;
			}
			return true;
		}
		return decodeLead<SET, I + 1>(window, lead, value, size);
	}
}


template <const FormSet& SET, class T>
FastInfoset_ALWAYS_INLINE bool decode(UInt64 window, int available, T& value, int& size)
	/// The number of the field whose first bit is the most significant bit
	/// of window, when available bits hold all of it and readers accept it.
{
	UInt64 number = 0;
	if (!decodeLead<SET>(window, static_cast<unsigned>(window >> (64 - SET.leadBits)), number, size)) return false;
	value = static_cast<T>(number);
	return size <= available;
}


} } } // namespace Ixor::FastInfoset::PrimitiveForms


#endif // FastInfoset_PrimitiveForms_INCLUDED
