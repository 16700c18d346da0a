// Describes JSON values at run time. The static type is derived from the description, so the two cannot
// differ.

export type Guard<T> = (value: unknown) => value is T;
export type Guarded<G> = G extends Guard<infer T> ? T : never;

export const anything: Guard<unknown> = (_value): _value is unknown => true;
export const text: Guard<string> = (value): value is string => typeof value === 'string';
export const bool: Guard<boolean> = (value): value is boolean => typeof value === 'boolean';
export const number: Guard<number> = (value): value is number =>
  typeof value === 'number' && Number.isFinite(value);

export function isRecord(value: unknown): value is Record<string, unknown> {
  return typeof value === 'object' && value !== null && !Array.isArray(value);
}

export function array<T>(item: Guard<T>): Guard<T[]> {
  return (value): value is T[] => Array.isArray(value) && value.every(item);
}

/** Accepts an absent value or that shape. */
export function optional<T>(guard: Guard<T>): Guard<T | undefined> {
  return (value): value is T | undefined => value === undefined || guard(value);
}

/** Accepts an object whose members all have one shape, whatever their names. */
export function record<T>(member: Guard<T>): Guard<Record<string, T>> {
  return (value): value is Record<string, T> => isRecord(value) && Object.values(value).every(member);
}

type Shape<F> = { [K in keyof F]: Guarded<F[K]> };

/** Accepts an object with at least these members. */
export function object<F extends Record<string, Guard<unknown>>>(members: F): Guard<Shape<F>> {
  return (value): value is Shape<F> =>
    isRecord(value) && Object.entries(members).every(([name, guard]) => guard(value[name]));
}
