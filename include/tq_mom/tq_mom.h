/* The data-store client library (libtq_mom_impl) as tq_mom_sync binds it.
 *
 * The library is closed; these headers declare just what the module and the host kit need. To build against a vendor's
 * own headers, give a directory that holds a tq_mom/tq_mom.h of the same meaning: -DTQ_MOM_INCLUDE_DIR=DIR. */
#ifndef TQ_MOM_TQ_MOM_H
#define TQ_MOM_TQ_MOM_H

#include <tq_mom/client.h>
#include <tq_mom/constants.h>
#include <tq_mom/messages.h>
#include <tq_mom/options.h>
#include <tq_mom/results.h>
#include <tq_mom/runtime.h>

#endif
