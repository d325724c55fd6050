-- tq_obj is loaded after tq_mom_sync.
require "load_order"("tq_mom_sync", "tq_obj")
