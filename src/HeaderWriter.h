//
// HeaderWriter.h
//
// Library: FastInfoset
// Module:  HeaderWriter
//
// The header of a document a writer writes. Internal: this header is not
// installed.
//


#ifndef FastInfoset_HeaderWriter_INCLUDED
#define FastInfoset_HeaderWriter_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "DeferredProlog.h"
#include "ItemWriter.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class HeaderWriter
	/// Writes the header: the optional XML declaration, the identification
	/// and version, and the optional components a writer uses: the initial
	/// vocabulary (what the document's vocabulary holds beyond a fresh one,
	/// or beyond the external vocabulary it names), the notations and the
	/// unparsed entities.
{
public:
	HeaderWriter(BitStreamWriter& writer, ItemWriter& items);

	void write(bool xmlDeclaration, const DocumentVocabulary& vocabulary, const std::string& externalURI, const DocumentVocabulary& external, const DeferredProlog& prolog);
		/// external is read only when externalURI is not empty.

private:
	void writeInitialVocabulary(const DocumentVocabulary& vocabulary, const std::string& externalURI);
	void writeRestrictedAlphabets(const DocumentRestrictedAlphabet& alphabets);
	void writeStrings(const Vocabulary<std::string>& voc, unsigned int lead, int leadSize);
	void writeNameSurrogates(const Vocabulary<QualifiedNameEntry>& voc);
	void writeDeclarations(const DeferredProlog& prolog);

	BitStreamWriter& _writer;
	ItemWriter&      _items;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_HeaderWriter_INCLUDED
