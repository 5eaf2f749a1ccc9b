#pragma once

class VELM_UUID;

/// Identities of the drivers whose kind the framework itself knows.
const VELM_UUID& DID_BoardDescr();
const VELM_UUID& DID_Resource();
