namespace scansim
{}
