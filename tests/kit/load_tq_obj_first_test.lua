-- tq_obj is loaded before tq_mom_sync.
require "load_order"("tq_obj", "tq_mom_sync")
