#pragma once

class VELM_UUID;

/// Identifiers of the kinds of drivers that the framework itself knows.
const VELM_UUID& DID_BoardDescr();
const VELM_UUID& DID_Resource();
