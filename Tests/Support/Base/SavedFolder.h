#pragma once

/**
 * Gives the process an engine's saved folder of its own, gone when the tests are over, so that nothing that is
 * tested reads or writes what the user keeps. Runs by itself in every test program that includes this.
 */
bool UseTemporarySavedFolder();

inline const bool bUsesTemporarySavedFolder = UseTemporarySavedFolder();
