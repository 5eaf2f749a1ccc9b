#include "DID.h"
#include "IBoardDescr.h"
#include "IDriver.h"
#include "IInfo.h"
#include "IResourceVoip.h"

// The identifiers that belong to the framework. They never change: hosts and drivers that were
// built separately compare them by value.

VELM_DEFINE_UUID(IUnknown::IID(), "81895F67-CA8E-4B0E-99AE-F16EFB44BEE2", "IUnknown")
VELM_DEFINE_UUID(IInfo::IID(), "09D8E762-7D17-48FD-A9FE-0043E775DB78", "IInfo")
VELM_DEFINE_UUID(IDriver::IID(), "FB6D3B6A-D0A6-497A-8900-EB5B43FD30AF", "IDriver")
VELM_DEFINE_UUID(IBoardDescr::IID(), "9A78A733-4553-4B9C-AFD1-2DD619F8C4AD", "IBoardDescr")
VELM_DEFINE_UUID(IResourceVoip::IID(), "D64847B0-D41E-45B5-9E58-6033C59085C3", "IResourceVoip")
VELM_DEFINE_UUID(DID_BoardDescr(), "87751D3E-6333-4395-9587-0648E7E60BAF", "DID_BoardDescr")
VELM_DEFINE_UUID(DID_Resource(), "4D7B70F7-FE69-4C83-B2EB-803A567BAC43", "DID_Resource")
