/**
 * @file lm.h
 * All headers of the matrix kernel. C and C++.
 */
#ifndef ZAREL_LM_H
#define ZAREL_LM_H

#include <zarel/lm_arrays.h>
#include <zarel/lm_bitvec.h>
#include <zarel/lm_complex.h>
#include <zarel/lm_error.h>
#include <zarel/lm_io.h>
#include <zarel/lm_ivec.h>
#include <zarel/lm_mat.h>
#include <zarel/lm_memory.h>
#include <zarel/lm_morse.h>
#include <zarel/lm_perm.h>
#include <zarel/lm_solve.h>
#include <zarel/lm_types.h>
#include <zarel/lm_vec.h>
#include <zarel/mrand.h>

#endif
