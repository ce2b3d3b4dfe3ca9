// The unit enumerations of the system. Their numeric values are stored in settings and
// passed between modules, so they never change.
#pragma once

namespace kiv_df {

enum UNITS : int {
    eMeters = 0,
    eUSFeet = 1,
    eIntlFeet = 2,
    eUSFeetInches = 3,
    eIntlFeetInches = 4,
    eUSChains = 5,
    eIntlChains = 6,
    eMiles = 7,       // only produced by the adaptive choice
    eKilometers = 8,  // only produced by the adaptive choice
    eIntlYards = 9,
    eUSYards = 10,
};

enum ANGLES : int {
    eRadians = 0,
    eGrads = 1,
    eMils = 2,
    eDMS = 3,
    eAngleUnit4 = 4,  // no conversion supports it
    eDMSPacked = 5,   // DDD.MMSSss in one number
};

// A serial port: the COM port number 1 to 255, 0 for none.
enum ECommPort : int { eCommNone = 0 };

}  // namespace kiv_df

// The number of decimals to show; the value is the count itself and is used directly as
// a printf precision. For feet-and-inches text it selects the finest fraction instead.
enum EKivDecimalDigits : int {
    eDecDigits0 = 0,
    eDecDigits1,
    eDecDigits2,
    eDecDigits3,
    eDecDigits4,
    eDecDigits5,
    eDecDigits6,
    eDecDigits7,
    eDecDigits8,
    eDecDigits9,
    eDecDigits10,
    eDecDigits11,
    eDecDigits12,
    eDecDigits13,
    eDecDigits14,
    eDecDigits15,
};
