//
// UUIDEncoding.h
//
// Library: FastInfoset
// Module:  ValueListEncoding
//
// UUIDEncoding is declared with the other typed lists in ValueListEncoding.h.
//


#ifndef FastInfoset_UUIDEncoding_INCLUDED
#define FastInfoset_UUIDEncoding_INCLUDED


#include "Ixor/FastInfoset/ValueListEncoding.h"


#endif // FastInfoset_UUIDEncoding_INCLUDED
