// Run-time descriptions of JSON values. The static type is derived from the description, so the two cannot differ.

export type Guard<T> = (value: unknown) => value is T;
export type Guarded<G> = G extends Guard<infer T> ? T : never;

export const anything: Guard<unknown> = (_value): _value is unknown => true;
export const text: Guard<string> = (value): value is string => typeof value === 'string';
export const bool: Guard<boolean> = (value): value is boolean => typeof value === 'boolean';
export const number: Guard<number> = (value): value is number => typeof value === 'number' && Number.isFinite(value);

export function isRecord(value: unknown): value is Record<string, unknown> {
  return typeof value === 'object' && value !== null && !Array.isArray(value);
}

export function array<T>(item: Guard<T>): Guard<T[]> {
  return (value): value is T[] => Array.isArray(value) && value.every(item);
}

/** An object with at least these members; further ones are let through. */
export function object<F extends Record<string, Guard<unknown>>>(members: F): Guard<{ [K in keyof F]: Guarded<F[K]> }> {
  return (value): value is { [K in keyof F]: Guarded<F[K]> } =>
    isRecord(value) && Object.entries(members).every(([name, guard]) => Object.hasOwn(value, name) && guard(value[name]));
}
