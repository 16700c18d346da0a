/** Lower case without accents: "Čištění" is found by "cisteni". */
export function fold(text: string): string {
  const plain = /^[\0-\x7f]*$/.test(text) ? text : text.normalize('NFD').replace(/\p{M}/gu, '');
  return plain.toLowerCase();
}
