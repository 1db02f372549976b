module deckel() { import("Platte 2.stl"); }
