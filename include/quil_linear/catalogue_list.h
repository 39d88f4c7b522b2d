/* The list of hands the library serves, in catalogue order. quil_linear.h and quil_linear.hpp
 * declare the compatibility interface from it (each hand's two C exports and its class), and the
 * library expands it into the hands' mappings, the catalogue the hand API names hands from, and
 * the compatibility layer's definitions. An X-macro list: define QUIL_MODEL, include, undefine.
 *
 * QUIL_MODEL(prefix, version, buffer, keeps_state, class_memory, get_data1)
 *   prefix       the hand's name: its mapping quil::hands::<prefix>, its class in namespace
 *                Quil_linear and the prefix of its two C exports
 *   version      the string <prefix>_GetVersion answers
 *   buffer       PER_CALL: a fresh buffer per call that the host releases with FreeMemory;
 *                PERSISTENT: one buffer per hand, reused by every call, never freed
 *   keeps_state  1 when the hand remembers pinch latches or thumb references between calls
 *   class_memory where the compatibility class keeps that memory for the C export:
 *                NO_MEMORY; LATCHES (static fingerPinchDone[4]); LATCHES_THUMB1 (and static
 *                thumb1_ref_val); LATCHES_THUMBS (and thumb1_ref_val, thumb2_ref_val);
 *                PRIVATE_LATCHES (latches inside GetDataValue, which hosts cannot see)
 *   get_data1    1 when the compatibility class has the GetData1 helper
 *
 * Plain C, so C hosts can expand it too. Adding a hand means one line here and one file in the
 * library's models/. */
QUIL_MODEL(QUIL_linear_AA,           "v1.1.5.1",               PER_CALL,   0, NO_MEMORY,       1)
QUIL_MODEL(QUIL_linear_AD,           "v1.2.0.1",               PER_CALL,   0, NO_MEMORY,       1)
QUIL_MODEL(QUIL_linear_AE,           "v1.3.6.1b",              PER_CALL,   0, NO_MEMORY,       1)
QUIL_MODEL(QUIL_linear_AG,           "v1.4.9.1b",              PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(PaXini_DexH13_GEN2,       "v1.4.8.1k",              PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(BrainCo_Revo1,            "V 1.4.8.1i",             PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(BrainCo_Revo2,            "V 1.4.8.1_BCRevo2_2",    PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(DexRobot_DexHand021_MP,   "V 1.4.8.1d",             PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(LINKERBOT_LinkerHand_O6,  "V 1.4.9.1_LO6_1",        PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(LINKERBOT_LinkerHand_O7,  "V 1.4.9.1_LO7_2",        PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(LINKERBOT_LinkerHand_L10, "V 1.4.9.1_LL10_1",       PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(LINKERBOT_LinkerHand_L20, "V 1.4.8.1E",             PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(INSPIRE_ROBOTS_RH56DFX,   "V 1.4.8.1g",             PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(INSPIRE_ROBOTS_RH56F1_E4, "V 1.4.9.1_INSRH56F1_2",  PER_CALL,   1, LATCHES_THUMB1,  0)
QUIL_MODEL(OYMotion_ROH_A001,        "V 1.4.7.1c",             PER_CALL,   0, NO_MEMORY,       0)
QUIL_MODEL(ROBOTERA_XHAND1,          "V 1.4.8.1f",             PERSISTENT, 0, NO_MEMORY,       1)
QUIL_MODEL(PICO_PXRHand,             "V 1.4.8.1PICO_1",        PERSISTENT, 0, NO_MEMORY,       1)
QUIL_MODEL(Proception,               "V 1.4.9.1_PRO_1",        PERSISTENT, 0, NO_MEMORY,       1)
QUIL_MODEL(AgiBot_OmniHand_O10,      "V 1.4.8.1_OmniO10_3",    PERSISTENT, 1, PRIVATE_LATCHES, 1)
QUIL_MODEL(AgiBot_OmniHand_O12,      "V 1.4.9.1_OmniO12_1",    PERSISTENT, 0, NO_MEMORY,       1)
QUIL_MODEL(LeadShine_DH116,          "V 1.4.9.1_LSD116_1",     PERSISTENT, 0, NO_MEMORY,       1)
QUIL_MODEL(RUIYAN_RY_H2,             "V 1.4.9.1_RYH2_2",       PERSISTENT, 0, NO_MEMORY,       1)
QUIL_MODEL(RUIYAN_RY_H15,            "V 1.4.9.1_RYH15_1",      PERSISTENT, 1, LATCHES,         1)
QUIL_MODEL(CHOHO_Hand,               "V 1.4.9.1_CHOHO_1",      PERSISTENT, 1, LATCHES,         0)
QUIL_MODEL(TalentRobot_Pro,          "V 1.4.9.1_TLT",          PERSISTENT, 0, NO_MEMORY,       1)
QUIL_MODEL(TetherIA_AeroHandOpen,    "V 1.4.9.1_Aerohandop_3", PERSISTENT, 1, LATCHES_THUMBS,  0)
