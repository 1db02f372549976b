// A case.
include <gemeinsam/Maße.scad>
use <Teile/Deckel ü.scad>
use <gemeinsam/Schraube M3.scad>
/* import("nie.stl"); */
deckel();
translate([20, 0, 0]) schraube();
translate([40, 0, 0]) import("Teile/Platte #1.stl");
translate([60, 0, 0]) linear_extrude(height = dicke) import(file = "Teile/Umriss.dxf");
translate([80, 0, 0]) surface(file = "Teile/Höhe über Grund.dat");
zeichen = "Teile/\u6728 Zeichen.off";
translate([100, 0, 0]) import(zeichen);
translate([120, 0, 0]) logo();
translate([140, 0, 0]) import("verloren.stl");
