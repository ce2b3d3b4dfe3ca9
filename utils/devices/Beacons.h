// Beacons: the radio beacons of a beacon list file (country, name, status, antenna
// location, frequency, rate) with their position and numbers, and the names of the
// correction satellites in both directions.
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivArray.h"
#include "platform/kivutils/KivString.h"

class TBeacon : public SharedHeapObject {
public:
    TBeacon() = default;
    TBeacon(const TBeacon& other) = default;
    TBeacon& operator=(const TBeacon& other) = default;
    ~TBeacon() = default;
    void SetEqual(const TBeacon& other) { *this = other; }

    // Empties every field but the country: a country line of the file holds for every
    // beacon after it.
    void Reset();

    // Latitude and longitude in decimal degrees (south and west negative) read from the
    // antenna location; both are always written, true only when all six parts were read.
    bool GetPosition(double& latitude, double& longitude);
    bool GetStatus();        // the status mentions "Operational"
    double GetFrequency();   // in the file's own unit; 0 when the text holds no number
    double GetBaudRate();

    CKivStringT country;
    CKivStringT name;
    CKivStringT status;
    CKivStringT antennaLocation;
    CKivStringT transmissionFrequency;
    CKivStringT transmissionRate;
};

// Appends the file's beacons to `beacons` (owned by the caller, freed by DeleteBeacons).
// True in every case: a missing file simply adds none.
bool LoadBeaconsFile(CKivStringT path, CKivArray<TBeacon*>& beacons);
void DeleteBeacons(CKivArray<TBeacon*>& beacons);

// The correction satellites; the numbers are the receiver's and are stored in settings.
enum OmnistarSats : int {
    eOmniEaSat = 2,
    eOmniApAmSat = 3,
    eOmniAmscEast = 5,
    eOmniAmscCentre = 6,
    eOmniAmscWest = 7,
    eOmniAfSat = 9,
    eOmniMsvEast = 15,
    eOmniMsvCenter = 16,
    eOmniMsvWest = 17,
    eOmniIorh = 18,
    eOmniAorwh = 19,
    eOmniAoreh = 20,
    eOmniOcsat = 21,
    eOmniUserDefined = 22,
};

// From a name the receiver reports; anything unknown is user defined.
OmnistarSats OmniStarSatNameToEnum(CKivStringT const& name);
// The name the screens show; empty for a value that is not a satellite.
CKivStringT OmniStarEnumToSatName(OmnistarSats sat);
