#include "ENIObject/CMasterENIObject.h"
#include "ENIObject/DescriptionElements.h"
#include "File/File.h"

#include <cstdio>
#include <cstdlib>

namespace {

// Bytes that the slots of a file may expand to: real devices need some ten kilobytes, and a longer file has
// more of them.
std::size_t placementBudget(const char* path) {
  constexpr std::size_t SHORT_FILE = std::size_t{64} * 1024 * 1024;
  constexpr std::size_t PER_BYTE = 64;
  CFile file;
  return file.open(path, FILE_MODE_READ) ? SHORT_FILE + PER_BYTE * file.getLength() : SHORT_FILE;
}

struct _DestroyHandle {
  void operator()(xml_file_handle* handle) const { xml_file_destroy(handle); }
};

std::string trimmed(const std::string& text) {
  constexpr const char* BLANKS = " \t\n\r\v";
  const std::size_t first = text.find_first_not_of(BLANKS);
  return first == std::string::npos ? std::string()
                                    : text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

} // namespace

CMasterENIObject::CMasterENIObject(LOG_FUNCTION log) : m_pfnLog(log) {}

CMasterENIObject::~CMasterENIObject() {
  removeAllENIObject();
}

unsigned int CMasterENIObject::insertENIFile(const char* path, bool replace) {
  // A file that gives 0 has added nothing, one that runs out of memory may have.
  std::map<unsigned int, _VendorENIObject> previous;
  const std::size_t known = m_vecDescription.size();
  m_vecNewModule.clear();
  if (replace) {
    previous.swap(m_mapVendor);
  }
  unsigned int result = 0;
  try {
    const std::unique_ptr<xml_file_handle, _DestroyHandle> handle(xml_file_create());
    result = resolveFile(handle.get(), path);
  } catch (...) {
    forgetNew(known);
    if (replace) {
      m_mapVendor.swap(previous);
    }
    throw;
  }
  if (result == 0 && replace) {
    m_mapVendor.swap(previous);
  }
  return result;
}

void CMasterENIObject::forgetNew(std::size_t known) noexcept {
  for (const unsigned int ident : m_vecNewModule) {
    m_mapModule.erase(ident);
  }
  while (m_vecDescription.size() > known) {
    const CSlaveENIObject& slave = *m_vecDescription.back();
    auto& revisions = m_mapVendor[slave.getVendorId()].mapProduct[slave.getProductCode()].mapRevision;
    revisions.erase(slave.getRevisionCode());
    m_vecDescription.pop_back();
  }
}

unsigned int CMasterENIObject::resolveFile(xml_file_handle* handle, const char* path) {
  constexpr int READ_ONLY = 1;
  if (!xml_file_open(handle, path, READ_ONLY)) {
    reportMessage(m_pfnLog, 0, "Can't open ENI-file!");
    return 0;
  }
  _XmlNode* root = xml_file_get_root(handle);
  if (root == nullptr || root->name != "EtherCATInfo") {
    reportMessage(m_pfnLog, 0, "Can't find EthercatInfo Node in xml-file!");
    return 0;
  }
  CXmlParser parser(handle);
  m_ulPlacementBudget = placementBudget(path);
  reportMessage(m_pfnLog, 1, "File version is %s", trimmed(attributeText(parser, root, "Version")).c_str());
  return resolveEthercatInfo(parser, root);
}

CSlaveENIObject* CMasterENIObject::findSlaveENIObject(unsigned int vendorId, unsigned int productCode,
                                                      unsigned int revisionNo) const {
  const auto vendor = m_mapVendor.find(vendorId);
  if (vendor == m_mapVendor.end()) {
    return nullptr;
  }
  const auto product = vendor->second.mapProduct.find(productCode);
  if (product == vendor->second.mapProduct.end()) {
    return nullptr;
  }
  const auto revision = product->second.mapRevision.find(revisionNo);
  return revision != product->second.mapRevision.end() ? revision->second : nullptr;
}

void CMasterENIObject::removeAllENIObject() {
  m_mapVendor.clear();
  m_mapModule.clear();
  m_vecDescription.clear();
}

// A capital X behind the # is not understood and gives 0.
unsigned int CMasterENIObject::resolveENIValue(const char* text) {
  std::string number = text != nullptr ? text : "";
  if (!number.empty() && number.front() == '#') {
    number.erase(0, 1);
  }
  if (!number.empty() && number.front() == 'x') {
    number.insert(0, 1, '0');
  }
  return static_cast<unsigned int>(std::strtoul(number.c_str(), nullptr, 0));
}

std::string CMasterENIObject::formatSeqInEnglish(unsigned int n) {
  switch (n) {
  case 0:
    return {};
  case 1:
    return "1st ";
  case 2:
    return "2nd ";
  case 3:
    return "3rd ";
  default: {
    char text[64];
    std::snprintf(text, sizeof(text), "%dth ", static_cast<int>(n));
    return text;
  }
  }
}
