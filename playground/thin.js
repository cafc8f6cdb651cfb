// Which points to draw of very many: in each of so many columns of the picture the lowest and the highest one.
export function thin(x, y, low, high, columns = 900) {
  const n = x.length;
  if (n <= 4 * columns) return Array.from({ length: n }, (_, i) => i);
  const lowest = new Int32Array(columns + 1).fill(-1);
  const highest = new Int32Array(columns + 1).fill(-1);
  const factor = high > low ? columns / (high - low) : 0;
  for (let i = 0; i < n; ++i) {
    const column = Math.floor((x[i] - low) * factor);
    if (lowest[column] < 0 || y[i] < y[lowest[column]]) lowest[column] = i;
    if (highest[column] < 0 || y[i] > y[highest[column]]) highest[column] = i;
  }
  const kept = new Set([...lowest, ...highest]);
  kept.delete(-1);
  return [...kept];
}

// The smallest and the largest of numbers, with a margin of a twentieth.
export function range(...lists) {
  let low = Infinity;
  let high = -Infinity;
  for (const list of lists) {
    for (const v of list) {
      if (v < low) low = v;
      if (v > high) high = v;
    }
  }
  const margin = (high - low) / 20 || Math.abs(high) / 20 || 1;
  return [low - margin, high + margin];
}
