//
// ShortEncoding.h
//
// Library: FastInfoset
// Module:  ValueListEncoding
//
// ShortEncoding is declared with the other typed lists in ValueListEncoding.h.
//


#ifndef FastInfoset_ShortEncoding_INCLUDED
#define FastInfoset_ShortEncoding_INCLUDED


#include "Ixor/FastInfoset/ValueListEncoding.h"


#endif // FastInfoset_ShortEncoding_INCLUDED
