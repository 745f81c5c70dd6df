#include "OpenElements.h"


namespace Ixor {
namespace FastInfoset {


OpenElements::OpenElements():
	_depth(0)
{
	_elements.reserve(16);
}


void OpenElements::copyParts(const std::string& prefix, const std::string& uri, const std::string& localName)
	/// Copies of the parts of the top element's name that no table holds.
{
	Element& element = _elements[_depth - 1];
	const std::string* parts[3] = {&prefix, &uri, &localName};
	const std::string** pStored[3] = {&element.name.pPrefix, &element.name.pURI, &element.name.pLocalName};
	for (int i = 0; i < 3; ++i)
	{
		if (*pStored[i]) continue;
		_copies.emplace_back(new std::string(*parts[i]));
		*pStored[i] = _copies.back().get();
		++element.copies;
	}
}


bool OpenElements::topMatches(const std::string& endURI, const std::string& endLocalName, const std::string& endQName, UInt64 revision) const
{
	const Element& top = _elements[_depth - 1];
	if (top.revision != revision) return true;
	const std::string& local = *top.name.pLocalName;
	if (!endLocalName.empty() && VocabularyHash<std::string>::equal(local, endLocalName.data(), endLocalName.size())
		&& VocabularyHash<std::string>::equal(*top.name.pURI, endURI.data(), endURI.size()))
	{
		return true;
	}
	if (endQName.empty()) return false;
	const std::string& pre = *top.name.pPrefix;
	if (pre.empty()) return endQName == local;
	return endQName.size() == pre.size() + 1 + local.size() && endQName.compare(0, pre.size(), pre) == 0
		&& endQName[pre.size()] == ':' && endQName.compare(pre.size() + 1, std::string::npos, local) == 0;
}


std::string OpenElements::topName() const
{
	const WriterTables::StoredName& name = _elements[_depth - 1].name;
	if (!name.pPrefix->empty()) return *name.pPrefix + ":" + *name.pLocalName;
	return name.pURI->empty() ? *name.pLocalName : "{" + *name.pURI + "}" + *name.pLocalName;
}


} } // namespace Ixor::FastInfoset
